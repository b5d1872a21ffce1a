#!/usr/bin/python3
"""Denoises a clip that ffmpeg reads and plots a line of it before and after: denoise_clip.py CLIP PLOT.png [FRAMES]

Needs the ffmpeg program and python3-matplotlib.
"""

import subprocess
import sys

import matplotlib
import numpy as np
import vidproc

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402


def size_of(clip):
    probe = ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "stream=width,height"]
    return map(int, subprocess.check_output(probe + ["-of", "csv=p=0", clip], text=True).strip().split(","))


def frames_of(clip, count, frame_bytes):
    raw = ["-frames:v", str(count), "-pix_fmt", "yuv420p", "-f", "rawvideo", "-"]
    with subprocess.Popen(["ffmpeg", "-v", "error", "-i", clip] + raw, stdout=subprocess.PIPE) as ffmpeg:
        frame = np.empty(frame_bytes, np.uint8)
        while ffmpeg.stdout.readinto(frame) == frame_bytes:
            yield frame


def main(clip, plot, count=32):
    width, height = size_of(clip)
    denoised = np.empty(vidproc.frame_bytes("I420", width, height), np.uint8)
    luma = vidproc.planes(denoised, "I420", width, height)[0]
    before, after = [], []
    with vidproc.Pre("I420", width, height, preset="webcam") as pre:
        for frame in frames_of(clip, int(count), denoised.size):
            pre.process(frame, denoised)
            before.append(frame[: width * height].reshape(height, width)[height // 2].copy())
            after.append(luma[height // 2].copy())
        print(f"{len(before)} frames of {width}x{height}, noise {pre.noise:.1f} luma levels")
    figure, axes = plt.subplots(2, sharex=True, sharey=True, figsize=(9, 6))
    for axis, lines, title in zip(axes, (before, after), ("before", "after")):
        axis.plot(np.stack(lines[-8:]).T, linewidth=0.5)
        axis.set_title(f"luma of the middle row, last 8 frames, {title}")
    figure.tight_layout()
    figure.savefig(plot, dpi=110)
    for name, lines in (("before", before), ("after", after)):
        print(f"{name}: luma varies over time by {np.median(np.std(lines[-8:], axis=0)):.2f} (median of the row)")


if __name__ == "__main__":
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    main(*sys.argv[1:])
