"""Shows what every option does to a picture, for docs/settings.md: settings.py TOOL PAGE.md DIRECTORY

Writes crops of the synthetic scene and plots of frequency responses to DIRECTORY, and the tables of figures to the page,
each behind the comment that names it: <!-- NAME -->.
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

import matplotlib
import numpy as np

matplotlib.use("Agg")
import matplotlib.pyplot as pyplot
from PIL import Image, ImageDraw, ImageFont

FRAMES = 40
SOURCE, HALF = "1280x720", "640x360"
COLOURS = ("#1f5fa8", "#c8452c", "#3c8c4a", "#8a5aa8", "#b0832a", "#5a5a5a")


class Tool:
    def __init__(self, path, work):
        self.path, self.work = path, work

    def run(self, *arguments):
        command = [self.path, *map(str, arguments)]
        return subprocess.run(command, cwd=self.work, check=True, capture_output=True, text=True).stdout

    def picture(self, *arguments):
        """The last frame that a command makes."""
        self.run(*arguments, "-q", "-o", "frame%03d.png")
        last = max(self.work.glob("frame*.png"))
        picture = Image.open(last).convert("RGB")
        for frame in self.work.glob("frame*.png"):
            frame.unlink()
        return picture

    def milliseconds(self, *arguments):
        """Of the fastest frame."""
        self.run(*arguments, "-q", "-o", "/dev/null", "--stats", "stats")
        lines = (self.work / "stats").read_text(encoding="utf-8").splitlines()
        return min(json.loads(line)["nanoseconds"] for line in lines) / 1e6

    def banks(self, *arguments):
        """The taps of luma's passes, an array for each phase in use, by the pass's name."""
        banks, name = {}, ""
        for line in self.run("filters", *arguments).splitlines():
            if title := re.match(r"(Horizontal|Vertical)[^:]*: up", line):
                name = title[1]
                banks[name] = []
            elif line.startswith("*"):
                taps = np.array([int(tap) for tap in line.split(":")[1].split("total")[0].split()])
                banks[name].append(taps / taps.sum())
        return banks


def draw_strip(panels, box, scale, path):
    """The same place of several pictures side by side, every pixel enlarged, under their titles."""
    width, height = (box[2] - box[0]) * scale, (box[3] - box[1]) * scale
    gap, head = 8, 24
    strip = Image.new("RGB", (len(panels) * (width + gap) - gap, height + head), "white")
    draw = ImageDraw.Draw(strip)
    font = ImageFont.truetype("DejaVuSans.ttf", 15)
    for number, (title, picture) in enumerate(panels):
        left = number * (width + gap)
        draw.text((left + 2, 2), title, "#202020", font)
        strip.paste(picture.crop(box).resize((width, height), Image.NEAREST), (left, head))
    strip.save(path, quality=80, optimize=True)


def draw_responses(curves, path, title, nyquist, floor=-42):
    """`curves`: taps by name, each at a phase that is in use."""
    figure, axes = pyplot.subplots(figsize=(7.5, 3.6))
    frequencies = np.linspace(0, 0.5, 401)
    for colour, (name, taps) in zip(COLOURS, curves.items()):
        sums = np.exp(-2j * np.pi * np.outer(frequencies, np.arange(len(taps)))) @ taps
        axes.plot(frequencies, 20 * np.log10(np.maximum(np.abs(sums), 1e-3)), color=colour, label=name, lw=1.6)
    if nyquist < 0.5:
        axes.axvline(nyquist, color="#808080", lw=1, ls="--")
        axes.annotate("half the output rate", (nyquist, floor + 3), xytext=(4, 0), textcoords="offset points", fontsize=8)
    axes.set(xlim=(0, 0.5), ylim=(floor, 12), xlabel="cycles per input sample", ylabel="dB", title=title)
    axes.title.set_size(10)
    axes.grid(color="#e4e4e4")
    axes.legend(fontsize=8, loc="lower left")
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})
    pyplot.close(figure)


def noise_gain(banks):
    """Of white noise, what share a sample keeps of its deviation: the root of the sum of all squared taps."""
    return np.prod([np.sqrt(np.mean([(taps**2).sum() for taps in phases])) for phases in banks.values()])


def write_table(page, name, head, rows):
    lines = [head, "|".join(["", *["---"] * (head.count("|") - 1), ""]), *(f"| {' | '.join(row)} |" for row in rows)]
    text = page.read_text(encoding="utf-8")
    table = f"<!-- {name} -->\n\n" + "\n".join(lines) + "\n"
    pattern = re.compile(rf"<!-- {name} -->\n(\n(\|.*\n)+)?")
    page.write_text(pattern.sub(lambda _: table, text), encoding="utf-8")


def show_denoising(tool, page, directory):
    scene = ("pre", "--synthetic", "--frames", FRAMES)
    chosen = {
        "off": "--denoise off",
        "edge 5": "--denoise 5:100:16 --temporal off",
        "edge 3": "--denoise 3:100:16 --temporal off",
        "edge 1": "--denoise 1:100:16 --temporal off",
        "edge 1, 3 passes": "--denoise 1:100:16:3 --temporal off",
        "softening 10, 8 taps": "--denoise 1:10:8 --temporal off",
        "temporal 100:0": "--temporal 100",
        "temporal 100:4": "--temporal 100:4",
        "edge 1, temporal 100:0": "--denoise 1:100:16",
        "auto": "--denoise auto",
    }
    pictures = {name: tool.picture(*scene, *options.split()) for name, options in chosen.items()}
    box = (606, 236, 766, 371)
    for file, names in (
        ("denoise", ("off", "edge 5", "edge 1", "auto")),
        ("temporal", ("edge 1", "temporal 100:4", "temporal 100:0", "edge 1, temporal 100:0")),
    ):
        draw_strip([(name, pictures[name]) for name in names], box, 2, directory / f"{file}.jpg")
    hand = (790, 340, 950, 490)
    moving = ("off", "auto", "edge 1, temporal 100:0")
    smoothed = tool.picture(*scene, *"--denoise 1:100:16 --motion-smoothing".split())
    panels = [(name, pictures[name]) for name in moving] + [("with motion smoothing", smoothed)]
    draw_strip(panels, hand, 2, directory / "motion.jpg")

    clips = []
    for number, options in enumerate(chosen.values()):
        clips.append(tool.work / f"clip{number}.y4m")
        tool.run(*scene, *options.split(), "-q", "-o", clips[-1])
    clean = tool.work / "clean.y4m"
    tool.run(*scene, "--synthetic-noise", 0, "--denoise", "off", "-q", "-o", clean)
    measure = [sys.executable, "scripts/measure_noise.py", "--clean", clean, clips[0], *clips]
    figures = subprocess.run(measure, check=True, capture_output=True, text=True).stdout.split()
    noise, psnr = figures[1 : 1 + len(clips)], figures[1 + len(clips) :]
    times = [tool.milliseconds(*scene, *options.split()) for options in chosen.values()]
    write_table(
        page, "denoising", "| `vidproc pre` | noise | PSNR | ms |",
        [(f"`{o}`", n, p, f"{t:.2f}") for o, n, p, t in zip(chosen.values(), noise, psnr, times)],
    )


def show_filters(tool, page, directory):
    names = ("automatic", "bilinear", "catmull-rom", "mitchell", "lanczos", "area")
    scene = ("pre", "--synthetic", "--synthetic-noise", 0, "--frames", 1, "--denoise", "off", "-s", HALF)
    panels = [(name, tool.picture(*scene, "--filter", name)) for name in names]
    draw_strip(panels, (498, 30, 578, 122), 3, directory / "filters-down.jpg")
    small = ("post", "--synthetic", "--synthetic-noise", 0, "--frames", 1, "--synthetic-size", HALF, "-s", SOURCE)
    panels = [(name, tool.picture(*small, "--filter", name)) for name in names[:5]]
    draw_strip(panels, (256, 86, 352, 196), 3, directory / "filters-up.jpg")

    down = ("--from", SOURCE, "--to", HALF)
    curves = {name: tool.banks(*down, "--filter", name)["Horizontal"][0] for name in names}
    draw_responses(curves, directory / "filters-16.svg", "rows at 2:1, 16 taps", 0.25)
    curves = {name: tool.banks(*down, "--taps", 8, "--filter", name)["Horizontal"][0] for name in names}
    draw_responses(curves, directory / "filters-8.svg", "rows at 2:1, 8 taps", 0.25)

    rows = []
    for name in names:
        row = [f"`{name}`"]
        for taps in (8, 16):
            options = ("--filter", name, "--taps", taps)
            row.append(f"{noise_gain(tool.banks(*down, *options)):.2f}")
            clip = ("pre", "--synthetic", "--frames", FRAMES, "--denoise", "off", "-s", HALF, *options)
            row.append(f"{tool.milliseconds(*clip):.2f}")
        rows.append(row)
    write_table(page, "filters", "| `--filter` | noise gain, 8 taps | ms | noise gain, 16 taps | ms |", rows)


def show_fixed_widths(tool, page, directory):
    down = ("--from", SOURCE, "--to", HALF)
    softenings = (0, 10, 20, 40, 100)
    curves = {
        f"softening {s}": tool.banks(*down, "--filter", "gaussian", "--softening", s)["Horizontal"][0]
        for s in softenings
    }
    draw_responses(curves, directory / "softening.svg", "gaussian, rows at 2:1, 16 taps", 0.25)
    curves = {
        f"lobes {n}": tool.banks(*down, "--filter", "two-sincs", "--lobes", n, "--softening", 20)["Horizontal"][0]
        for n in (1, 2, 3, 8)
    }
    draw_responses(curves, directory / "lobes.svg", "two-sincs, softening 20, rows at 2:1, 16 taps", 0.25)
    names = ("gaussian", "hamming-sinc", "two-sincs")
    rows = []
    for softening in softenings:
        banks = [tool.banks(*down, "--filter", name, "--softening", softening) for name in names]
        rows.append([str(softening), *(f"{noise_gain(bank):.2f}" for bank in banks)])
    write_table(page, "softening", "| `softening` | " + " | ".join(f"`{name}`" for name in names) + " |", rows)


def show_sharpening(tool, page, directory):
    strengths = (0, 1, 2, 4, 8)
    scene = ("post", "--synthetic", "--synthetic-noise", 0, "--frames", 1)
    panels = [(f"sharpening {s}", tool.picture(*scene, "--sharpen", s)) for s in strengths]
    draw_strip(panels, (256, 86, 352, 196), 3, directory / "sharpening.jpg")
    banks = {s: tool.banks("--from", SOURCE, "--to", SOURCE, "--sharpen", s) for s in strengths}
    curves = {f"sharpening {s}": bank["Horizontal"][0] for s, bank in banks.items() if bank}
    draw_responses(curves, directory / "sharpening.svg", "rows at 1:1", 0.5, floor=-6)
    rows = [(str(s), f"{noise_gain(bank):.2f}") for s, bank in banks.items()]
    write_table(page, "sharpening", "| `sharpening` | noise gain |", rows)


def show_finish(tool, directory):
    scene = ("post", "--synthetic", "--synthetic-noise", 0, "--frames", 1)
    levels = {"gain 64, offset 0": "64:0", "gain 80, offset 0": "80:0", "gain 64, offset -24": "64:-24",
              "gain 48, offset 0": "48:0"}
    panels = [(name, tool.picture(*scene, "--luma", value)) for name, value in levels.items()]
    draw_strip(panels, (520, 160, 860, 520), 1, directory / "luma.jpg")

    def stretched(picture):
        samples = np.asarray(picture, dtype=float)
        return Image.fromarray(np.clip((samples - samples[20:300, 900:980].mean()) * 6 + 128, 0, 255).astype(np.uint8))

    panels = [(f"dither {d}", stretched(tool.picture(*scene, "--dither", d))) for d in (0, 2, 6, 12)]
    draw_strip(panels, (760, 20, 960, 170), 2, directory / "dither.jpg")


def luma_of(picture):
    return np.asarray(picture.convert("L"), dtype=float)


def show_deblocking(tool, page, directory):
    tool.run("post", "--synthetic", "--synthetic-noise", 0, "--synthetic-size", HALF, "--frames", 30, "-q",
             "--codec", "mpeg4", "-o", "blocks.mp4")
    decoded = tool.picture("post", "blocks.mp4")
    deblocked = {level: tool.picture("post", "blocks.mp4", "--deblock", level) for level in (21, 30, 40, 50, 80, 255)}
    panels = [("decoded", decoded)] + [(f"level {level}", deblocked[level]) for level in (21, 40, 50, 255)]
    draw_strip(panels, (300, 100, 400, 190), 3, directory / "deblocking.jpg")
    changes = {level: np.abs(luma_of(picture) - luma_of(decoded)).mean() for level, picture in deblocked.items()}
    rows = [(str(level), f"{change:.1f}") for level, change in changes.items()]
    write_table(page, "deblocking", "| `deblock_level` | mean change of a pixel, levels |", rows)


def main():
    tool, page, directory = [pathlib.Path(argument).resolve() for argument in sys.argv[1:]]
    pyplot.rcParams.update({"svg.hashsalt": "vidproc", "svg.fonttype": "none", "font.family": "sans-serif"})
    with tempfile.TemporaryDirectory() as work:
        tool = Tool(tool, pathlib.Path(work))
        show_denoising(tool, page, directory)
        show_filters(tool, page, directory)
        show_fixed_widths(tool, page, directory)
        show_sharpening(tool, page, directory)
        show_finish(tool, directory)
        show_deblocking(tool, page, directory)


main()
