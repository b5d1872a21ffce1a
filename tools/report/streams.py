"""Streams of I420 frames through FFmpeg's programs and through libvidproc.so, and what they measure.

Every step's result is kept in a cache directory under a name made from the whole recipe, so that a repeated or
interrupted report continues where it was.
"""

import ctypes
import hashlib
import json
import os
import re
import subprocess
import time
from dataclasses import dataclass
from pathlib import Path

import numpy

FORMAT_I420 = 4
STATUS_OK = 0


def file_digest(path):
    return hashlib.sha1(Path(path).read_bytes()).hexdigest()[:12]


class FrameInfo(ctypes.Structure):
    _fields_ = [(name, ctypes.c_int32) for name in ("format", "width", "height", "siting")]


SHARED_FIELDS = ("alignment", "filter", "taps", "softening", "lobes", "sharpening", "luma_gain", "luma_offset",
                 "dither_level", "dither_seed")
PRE_FIELDS = ("denoise_edge", "denoise_softening", "denoise_taps", "temporal_strength", "temporal_shift",
              "motion_smoothing", "denoise_passes", "denoise_auto")


def options_struct(name, fields):
    members = [("struct_size", ctypes.c_uint32), ("input", FrameInfo), ("output", FrameInfo)]
    return type(name, (ctypes.Structure,), {"_fields_": members + [(field, ctypes.c_int32) for field in fields]})


PreOptions = options_struct("PreOptions", SHARED_FIELDS + PRE_FIELDS)
PostOptions = options_struct("PostOptions", SHARED_FIELDS + ("deblock_level",))


class Frame(ctypes.Structure):
    _fields_ = [("format", ctypes.c_int32), ("width", ctypes.c_int32), ("height", ctypes.c_int32),
                ("plane", ctypes.c_void_p * 3), ("stride", ctypes.c_ssize_t * 3), ("bytes", ctypes.c_size_t * 3)]


class Vidproc:
    """The checked interface, for streams of I420 frames."""

    def __init__(self, path):
        self.library = ctypes.CDLL(str(path))
        self.digest = file_digest(path)
        self.library.vidproc_pre_last_error.restype = ctypes.c_char_p
        self.library.vidproc_post_last_error.restype = ctypes.c_char_p
        self.library.vidproc_frame_bytes.restype = ctypes.c_size_t
        self.seconds = 0  # of the thread inside the process calls of the last run

    def run(self, side, settings, frames, size, out_size):
        """`side` is "pre" or "post"; `settings` a dictionary of options, "preset" among them."""
        call = lambda name: getattr(self.library, f"vidproc_{side}_{name}")
        options = (PreOptions if side == "pre" else PostOptions)()
        settings = dict(settings)
        preset = settings.pop("preset", None)
        if preset is None:
            call("options_init")(ctypes.byref(options), ctypes.c_size_t(ctypes.sizeof(options)))
        else:
            status = call("options_preset")(ctypes.byref(options), ctypes.c_size_t(ctypes.sizeof(options)),
                                            preset.encode())
            if status != STATUS_OK:
                raise ValueError(f"no preset {preset}")
        options.input = FrameInfo(FORMAT_I420, *size, 0)
        options.output = FrameInfo(FORMAT_I420, *out_size, 0)
        for name, value in settings.items():
            if name not in dict(options._fields_):
                raise ValueError(f"no setting {name}")
            setattr(options, name, value)
        handle = ctypes.c_void_p()
        call("create")(ctypes.byref(handle))
        try:
            self._check(call, handle, call("configure")(handle, ctypes.byref(options)))
            return self._process(call, handle, options, frames)
        finally:
            call("destroy")(handle)

    def _check(self, call, handle, status):
        if status != STATUS_OK:
            raise ValueError(call("last_error")(handle).decode())

    def _process(self, call, handle, options, frames):
        size = frame_bytes((options.output.width, options.output.height))
        result = numpy.full((len(frames), size), 0, numpy.uint8)  # in memory that is there
        self.seconds = 0
        source, target = Frame(), Frame()
        for given, made in zip(frames, result):
            for frame, info, memory, name in ((source, options.input, given, "input"),
                                              (target, options.output, made, "output")):
                getattr(self.library, f"vidproc_{name}_map")(ctypes.byref(frame), ctypes.byref(info),
                                                             ctypes.c_void_p(memory.ctypes.data),
                                                             ctypes.c_size_t(memory.size))
            start = time.thread_time()
            status = call("process")(handle, ctypes.byref(source), ctypes.byref(target))
            self.seconds += time.thread_time() - start
            self._check(call, handle, status)
        return result


def frame_bytes(size):
    width, height = size
    return width * height + 2 * ((width + 1) // 2) * ((height + 1) // 2)


@dataclass(frozen=True)
class Stream:
    """Raw I420 frames in a file."""
    path: Path
    recipe: str
    size: tuple

    def frames(self):
        return numpy.fromfile(self.path, numpy.uint8).reshape(-1, frame_bytes(self.size))

    def input_arguments(self):
        return raw_input(self.size) + ["-i", str(self.path)]


def raw_input(size):
    return ["-f", "rawvideo", "-pix_fmt", "yuv420p", "-s", f"{size[0]}x{size[1]}", "-r", "25"]


def ffmpeg(arguments):
    """Runs it on one thread, which makes its results repeatable. @return its outputs."""
    command = ["ffmpeg", "-hide_banner", "-nostdin", "-y", "-threads", "1", "-filter_threads", "1"] + arguments
    done = subprocess.run(command, capture_output=True)
    if done.returncode:
        raise RuntimeError(" ".join(command) + "\n" + done.stderr.decode()[-2000:])
    return done


class StreamStore:
    """Makes streams and measures them, and keeps what it has made."""

    def __init__(self, cache, vidproc):
        self.cache = Path(cache)
        self.cache.mkdir(parents=True, exist_ok=True)
        self.vidproc = vidproc

    def place(self, recipe, suffix):
        return self.cache / (hashlib.sha1(recipe.encode()).hexdigest()[:20] + suffix)

    def make(self, recipe, size, write):
        """A stream that write(path) makes where it is not there yet."""
        path = self.place(recipe, ".yuv")
        if not path.exists():
            unfinished = path.with_suffix(".part")
            write(unfinished)
            os.replace(unfinished, path)
        return Stream(path, recipe, size)

    def clip(self, path, first, count):
        """Frames of a clip in limited range."""
        probe = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                                "stream=width,height", "-of", "json", str(path)], capture_output=True, check=True)
        shape = json.loads(probe.stdout)["streams"][0]
        recipe = f"clip {file_digest(path)} {first} {count}"
        filters = f"trim=start_frame={first}:end_frame={first + count},setpts=PTS-STARTPTS,scale=out_range=tv"
        return self.make(recipe, (shape["width"], shape["height"]), lambda out: ffmpeg(
            ["-i", str(path), "-vf", filters, "-pix_fmt", "yuv420p", "-f", "rawvideo", str(out)]))

    def filtered(self, stream, filters, size=None):
        """Through a chain of FFmpeg's filters, which may change the size."""
        if not filters:
            return stream
        return self.make(f"{stream.recipe} | {filters}", size or stream.size, lambda out: ffmpeg(
            stream.input_arguments() + ["-vf", filters, "-pix_fmt", "yuv420p", "-f", "rawvideo", str(out)]))

    def processed(self, stream, side, settings, size):
        """Through vidproc."""
        recipe = f"{stream.recipe} | {self.vidproc.digest} {side} {sorted(settings.items())} {size}"
        return self.make(recipe, size, lambda out: self.vidproc.run(
            side, settings, stream.frames(), stream.size, size).tofile(out))

    def encoded(self, stream, speed, quality):
        """Through x264 and back. @return the decoded stream and the bytes between."""
        recipe = f"{stream.recipe} | x264 {speed} {quality}"
        coded = self.place(recipe, ".h264")
        if not coded.exists():
            unfinished = coded.with_suffix(".part")
            ffmpeg(stream.input_arguments() + ["-c:v", "libx264", "-threads", "1"] + speed.split() +
                   ["-crf", str(quality), "-f", "h264", str(unfinished)])
            os.replace(unfinished, coded)
        decoded = self.make(recipe, stream.size, lambda out: ffmpeg(
            ["-i", str(coded), "-vsync", "passthrough", "-pix_fmt", "yuv420p", "-f", "rawvideo", str(out)]))
        return decoded, coded.stat().st_size

    def likeness(self, stream, clean):
        """PSNR in dB and SSIM of both, each for Y, Cb, Cr."""
        graph = "[0:v]split[a][b];[1:v]split[c][d];[a][c]psnr[p];[b][d]ssim[s]"
        log = ffmpeg(stream.input_arguments() + clean.input_arguments() + [
            "-filter_complex", graph, "-map", "[p]", "-f", "null", "-", "-map", "[s]", "-f", "null", "-"]).stderr
        psnr = re.search(rb"PSNR y:(\S+) u:(\S+) v:(\S+)", log).groups()
        ssim = re.search(rb"SSIM Y:(\S+) \S+ U:(\S+) \S+ V:(\S+)", log).groups()
        return {"psnr": [float(x) for x in psnr], "ssim": [float(x) for x in ssim]}

    def remembered(self, recipe, compute):
        """What compute() gives, once; anything that JSON holds."""
        path = self.place(recipe, ".json")
        if not path.exists():
            path.write_text(json.dumps(compute()))
        return json.loads(path.read_text())
