"""What vidproc does to the picture on the far side, beside other filters: tables, plots and crops.

A clip counts as clean. Noise is added, each chain denoises and scales it down, x264 encodes it, and the decoded picture
is scaled up again and compared with the clean one.
"""

import argparse
from dataclasses import dataclass
from pathlib import Path

import numpy

import plots
from bd_rate import bd_quality, bd_rate
from response import NOISE, Response, hqdn3d
from streams import StreamStore, Vidproc, ffmpeg
from text_page import text_page

# Strength of FFmpeg's noise filter by the deviation that it gives limited-range luma.
NOISES = {0: 0, 1.9: 4, 4.2: 8, 8.8: 16}
RATIOS = {"1:1": (1, 1), "3:2": (3, 2), "2:1": (2, 1)}
SPEEDS = {"veryfast zerolatency": "-preset veryfast -tune zerolatency", "medium": "-preset medium"}
QUALITIES = (20, 24, 28, 32)
TIMINGS = 5
TIMED_LAPS = (1, 4, 32)  # of the clip: more where they are soon over
LONG_TIMING = 1  # second of a processor, whose time FFmpeg tells in ticks
ANCHOR = "hqdn3d strong, bicubic"
OURS = "vidproc webcam"
TEXT_CHAINS = ("none, lanczos", "none, bicubic", "vidproc screen")


def size_at(ratio, size):
    """The size that the encoder gets, even where it is scaled."""
    down, up = RATIOS[ratio]
    return tuple(side if up == down else (side * up // down + 1) // 2 * 2 for side in size)


def kilobits_per_second(coded_bytes, frames):
    return 8 * coded_bytes * 25 / frames / 1000


@dataclass(frozen=True)
class Chain:
    """A denoiser and a scaler."""
    name: str
    filters: str
    scaler: str

    def before(self, store, stream, size):
        """Denoised and scaled down."""
        return self._scaled(store, store.filtered(stream, self.filters), size)

    def after(self, store, stream, size):
        return self._scaled(store, stream, size)

    def _scaled(self, store, stream, size):
        return stream if size == stream.size else store.filtered(stream, self._scale_filter(size), size)

    def _scale_filter(self, size):
        return f"scale={size[0]}:{size[1]}:flags={self.scaler}"

    def seconds(self, store, stream, size):
        """Of one frame on its way to the encoder, on one thread."""
        scale = self._scale_filter(size) if size != stream.size else ""

        def user_seconds(filters, laps):
            log = ffmpeg(["-benchmark", "-stream_loop", str(laps - 1)] + stream.input_arguments() +
                         (["-vf", filters] if filters else []) + ["-f", "null", "-"]).stderr.decode()
            return float(log.split("bench: utime=")[1].split("s")[0])

        filters = ",".join(part for part in (self.filters, scale) if part)
        for laps in TIMED_LAPS:
            seconds = user_seconds(filters, laps)
            if seconds > LONG_TIMING:
                break
        return max(0, seconds - user_seconds("", laps)) / (laps * len(stream.frames())) if filters else 0


@dataclass(frozen=True)
class VidprocChain:
    """Settings of vidproc before and after, each a tuple of names and values."""
    name: str
    pre: tuple
    post: tuple

    def before(self, store, stream, size):
        return store.processed(stream, "pre", dict(self.pre), size)

    def after(self, store, stream, size):
        """Presets of post-processing only scale."""
        is_preset = len(self.post) == 1
        if is_preset and size == stream.size:
            return stream
        return store.processed(stream, "post", dict(self.post), size)

    def seconds(self, store, stream, size):
        frames = numpy.tile(stream.frames(), (TIMED_LAPS[1], 1))
        store.vidproc.run("pre", dict(self.pre), frames, stream.size, size)
        return store.vidproc.seconds / len(frames)


def settings_of(preset, changes=""):
    """Of a preset and changes of it as in "denoise_edge=2,temporal_strength=70"."""
    pairs = [change.split("=") for change in changes.split(",") if change]
    return (("preset", preset), *((name, int(value)) for name, value in pairs))


def known_chains():
    denoisers = {"none": "", "hqdn3d": "hqdn3d", "hqdn3d strong": "hqdn3d=8:6:12:9", "nlmeans": "nlmeans=s=3",
                 "atadenoise": "atadenoise", "fftdnoiz": "fftdnoiz=sigma=4"}
    peers = [Chain(f"{name}, {scaler}", filters, scaler)
             for name, filters in denoisers.items() for scaler in ("bicubic", "lanczos")]
    return peers + [VidprocChain(OURS, settings_of("webcam"), settings_of("camera")),
                    VidprocChain("vidproc screen", settings_of("screen"), settings_of("screen-share"))]


def asked_chains(arguments):
    named = [chain for chain in known_chains()
             if not arguments.chains or chain.name == ANCHOR or any(part in chain.name for part in arguments.chains)]
    return (named + [Chain(f"{filters}, bicubic", filters, "bicubic") for filters in arguments.filters] +
            [VidprocChain(f"{OURS}, {changes}", settings_of("webcam", changes), settings_of("camera"))
             for changes in arguments.pre] +
            [VidprocChain(f"{OURS}, then {changes}", settings_of("webcam"), settings_of("camera", changes))
             for changes in arguments.post])


@dataclass
class Point:
    """What a chain gives at one quality of the encoder."""
    bits: float
    psnr: list  # Y, Cb, Cr
    ssim: list

    def figure(self, measure):
        luma, cb, cr = getattr(self, measure[:4])
        return luma if measure.endswith("Y") else (cb + cr) / 2


MEASURES = ("psnr Y", "ssim Y", "psnr C", "ssim C")


def measure_curve(store, chain, clean, noisy, ratio, speed, qualities):
    size = size_at(ratio, clean.size)
    frames = len(clean.frames())
    before = chain.before(store, noisy, size)

    def measure(quality):
        decoded, coded_bytes = store.encoded(before, SPEEDS[speed], quality)
        shown = chain.after(store, decoded, clean.size)
        figures = store.likeness(shown, clean)
        for path in {shown.path, decoded.path} - {before.path}:
            path.unlink(missing_ok=True)
        return {"bits": kilobits_per_second(coded_bytes, frames), **figures}

    return [Point(**store.remembered(f"{before.recipe} | {chain} {speed} {quality}", lambda: measure(quality)))
            for quality in qualities]


def signed(value, digits=1):
    return "-" if value is None else f"{value:+.{digits}f}"


def compare(anchor, tested):
    """BD-rate by every measure, as text, with the range of luma PSNR in which both have points."""
    cells, span = [], None
    for measure in MEASURES:
        rate, common = bd_rate([(p.figure(measure), p.bits) for p in anchor],
                               [(p.figure(measure), p.bits) for p in tested])
        cells.append(signed(rate))
        if measure == "psnr Y":
            span = common
    return cells + ["-" if span is None else f"{span[0]:.1f} to {span[1]:.1f}"]


class Report:
    def __init__(self, store, arguments, directory):
        self.store, self.arguments, self.directory = store, arguments, directory
        self.lines = []

    def clip(self, name, path):
        clean = self.store.clip(path, self.arguments.first, self.arguments.frames)
        last = self.arguments.first + len(clean.frames()) - 1
        size = f"{clean.size[0]}x{clean.size[1]}"
        self.lines += [f"## {name}", "", f"{size}, frames {self.arguments.first} to {last}.", ""]
        for speed in self.arguments.speeds:
            for ratio in self.arguments.ratios:
                for noise in self.arguments.noises:
                    self._case(name, clean, speed, ratio, noise)
        self._response(clean)
        self._times(clean)

    def text_page(self):
        """Of drawn text, without noise: vidproc's preset for screens beside a Lanczos chain."""
        size, count = (640, 360), 32
        clean = self.store.make(f"text page {size} {count}", size, lambda out: text_page(size, count).tofile(out))
        chains = {chain.name: chain for chain in known_chains() if chain.name in TEXT_CHAINS}
        self.lines += ["## A page of text that scrolls", "", f"640x360, {count} frames, luma.", "",
                       "| ratio | chain | PSNR at equal bits, dB | BD-rate, PSNR | BD-rate, SSIM |",
                       "|---|---|---|---|---|"]
        crops = {"clean": clean.frames()[-1]}
        for ratio in ("3:2", "2:1"):
            curves = {name: measure_curve(self.store, chain, clean, clean, ratio, list(SPEEDS)[0], QUALITIES)
                      for name, chain in chains.items()}
            anchor = curves[TEXT_CHAINS[0]]
            for name, curve in curves.items():
                gain = bd_quality(*([(point.psnr[0], point.bits) for point in points] for points in (anchor, curve)))
                cells = [ratio, name, signed(gain, 2)] + compare(anchor, curve)[:2]
                self.lines.append("| " + " | ".join(cells) + " |")
                crops[f"{name}, {ratio}"] = self._at_equal_bits(chains[name], clean, clean, ratio, anchor[1].bits)[-1]
        picture = self.directory / "text-crops.png"
        plots.draw_crops({title: crop for title, crop in crops.items() if "bicubic" not in title}, size, picture)
        self.lines += ["", f"![At equal bits](report/{picture.name})", ""]

    def _case(self, name, clean, speed, ratio, noise):
        strength = NOISES[noise]
        noisy = self.store.filtered(clean, f"noise=alls={strength}:allf=t:all_seed=1" if strength else "")
        title = f"{ratio}, noise {noise}, {speed}"
        print(f"    {name}: {title}", flush=True)
        chains = {chain.name: chain for chain in asked_chains(self.arguments)}
        curves = {name: measure_curve(self.store, chain, clean, noisy, ratio, speed, self.arguments.qualities)
                  for name, chain in chains.items()}
        self.lines += [f"### {title}", "", "| chain | PSNR Y | SSIM Y | PSNR C | SSIM C | in common, dB |",
                       "|---|---|---|---|---|---|"]
        for chain in chains:
            self.lines.append(f"| {chain} | " + " | ".join(compare(curves[ANCHOR], curves[chain])) + " |")
        self.lines.append("")
        if ratio == "2:1" and noise == 4.2 and speed == list(SPEEDS)[0]:
            self._pictures(name, chains, clean, noisy, curves)

    def _pictures(self, name, chains, clean, noisy, curves):
        plot = self.directory / f"{name}-curves.png"
        plots.draw_curves(curves, OURS, ANCHOR, plot)
        target = curves[ANCHOR][-2].bits
        crops = {"clean": clean.frames(), "as it comes from the camera": noisy.frames()}
        for chain in (ANCHOR, "nlmeans, bicubic", OURS):
            if chain in chains:
                crops[chain] = self._at_equal_bits(chains[chain], clean, noisy, "2:1", target)
        picture = self.directory / f"{name}-crops.png"
        plots.draw_crops({title: frames[-1] for title, frames in crops.items()}, clean.size, picture)
        self.lines += [f"![Bits against quality](report/{plot.name})", "",
                       f"![At about {target:.0f} kbit/s](report/{picture.name})", ""]

    def _at_equal_bits(self, chain, clean, noisy, ratio, target):
        """Frames of the best quality that takes no more bits."""
        size = size_at(ratio, clean.size)
        before = chain.before(self.store, noisy, size)
        for quality in range(18, 45):
            decoded, coded_bytes = self.store.encoded(before, list(SPEEDS.values())[0], quality)
            if kilobits_per_second(coded_bytes, len(clean.frames())) <= target:
                return chain.after(self.store, decoded, clean.size).frames()
        raise RuntimeError("no quality takes so few bits")

    def _response(self, clean):
        response = Response(self.store, clean, {"preset": "webcam"})
        self.lines += ["### After a cut and behind a moving edge, 1:1, noise 4.2", "",
                       f"The first frame as a still picture; `{hqdn3d(response.strength)}` leaves the same noise on "
                       f"its flat parts, {response.flat_noise:.2f}.",
                       "What is off, as root mean square of luma levels:", "",
                       "| where | hqdn3d | vidproc webcam |", "|---|---|---|"]
        self.lines += [f"| {where} | {theirs:.2f} | {ours:.2f} |" for where, theirs, ours in response.rows()]
        self.lines.append("")

    def _times(self, clean):
        noisy = self.store.filtered(clean, NOISE)
        size = size_at("2:1", clean.size)
        chains = asked_chains(self.arguments)
        rounds = [[chain.seconds(self.store, noisy, size) for chain in chains] for _ in range(TIMINGS)]
        self.lines += ["### Time of a frame before the encoder, 2:1, noise 4.2", "", "| chain | ms |", "|---|---|"]
        self.lines += [f"| {chain.name} | {1000 * min(times):.2f} |" for chain, times in zip(chains, zip(*rounds))]
        self.lines.append("")


HEADER = """# The picture on the far side

Written by `scripts/report`. The clip counts as clean; noise of the deviation that stands in the heading is added to it
(FFmpeg's `noise`, on luma and chroma), the chain denoises and scales it down, x264 encodes it at the CRF that the
options name, the decoded picture is scaled up again and compared with the clean one. Figures are BD-rates in per cent
against `hqdn3d=8:6:12:9` with swscale's bicubic scaler both ways: the change in bits at equal quality, negative is
better. Y is luma, C the mean of Cb and Cr. Curves are monotone piecewise cubics over the range of quality that both
reach; the last column says which, in dB of luma PSNR, and "-" that there is none. "hqdn3d" has its default strength,
"vidproc webcam" the presets `webcam` before and `camera` after. Times are those of the fastest of five runs on one
thread.

Options of this run: {options}
"""


def parse_arguments():
    parser = argparse.ArgumentParser(prog="scripts/report", description=__doc__)
    parser.add_argument("clips", nargs="*", type=Path, help="clips in any format that FFmpeg reads")
    parser.add_argument("--first", type=int, default=0, help="first frame (default 0)")
    parser.add_argument("--frames", type=int, default=48, help="frames of each clip (default 48)")
    parser.add_argument("--noises", nargs="+", type=float, default=list(NOISES), choices=list(NOISES))
    parser.add_argument("--ratios", nargs="+", default=list(RATIOS), choices=list(RATIOS))
    parser.add_argument("--speeds", nargs="+", default=list(SPEEDS), choices=list(SPEEDS), help="of x264")
    parser.add_argument("--chains", nargs="+", default=[], help="only those whose names contain one of these")
    parser.add_argument("--filters", nargs="+", default=[], help="more chains: FFmpeg's filters before bicubic scaling")
    parser.add_argument("--pre", nargs="+", default=[], metavar="NAME=VALUE[,...]",
                        help="more chains: the preset webcam with other settings")
    parser.add_argument("--post", nargs="+", default=[], metavar="NAME=VALUE[,...]",
                        help="more chains: webcam, and the preset camera with other settings after decoding")
    parser.add_argument("--qualities", nargs="+", type=int, default=list(QUALITIES), metavar="CRF", help="of x264")
    parser.add_argument("--text-page", action="store_true", help="a drawn page of text too")
    parser.add_argument("--library", type=Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--cache", type=Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--output", type=Path, required=True, help=argparse.SUPPRESS)
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    pictures = arguments.output.parent / "report"
    pictures.mkdir(parents=True, exist_ok=True)
    report = Report(StreamStore(arguments.cache, Vidproc(arguments.library)), arguments, pictures)
    for path in arguments.clips:
        report.clip(path.stem, path)
    if arguments.text_page:
        report.text_page()
    hidden = ("clips", "library", "cache", "output")
    options = ", ".join(f"{name} {value}" for name, value in vars(arguments).items() if name not in hidden)
    arguments.output.write_text(HEADER.format(options=options) + "\n" + "\n".join(report.lines))
    print(f"Wrote {arguments.output}.")


if __name__ == "__main__":
    main()
