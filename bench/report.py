"""Turns the JSON of one run of vidproc_bench into a page of tables and its picture.

report.py RESULTS.json DIRECTORY: writes DIRECTORY/performance.md and DIRECTORY/performance.png.
"""

import json
import re
import sys
from collections import defaultdict
from pathlib import Path

OWN = "vidproc-"
# As the library orders them.
LEVELS = ["scalar", "portable", "sse2", "sse41", "avx2", "avx512", "avx512vbmi", "neon", "wasm"]
SHOWN_AS_RATIO = ["avx2", "avx512", "avx512vbmi", "neon"]
SCALE_TAPS = 8  # horizontal; half as many vertical ones
PLANAR_420 = ("automatic", "automatic16", "automatic-nv12", "post-automatic", "denoise-and-scale", "nv12")

# The panels of the picture: a question, its work and sizes, and the peers that people would take instead.
PANELS = [
    ("Halve a camera's frame\n1280x720 to 640x360", "automatic/1280x720-640x360",
     {"libyuv-box": "libyuv box", "zimg-bicubic-avx512": "zimg bicubic, avx512", "zimg-bicubic": "zimg bicubic",
      "swscale-bicubic": "swscale bicubic"}),
    ("1080p to 720p", "automatic/1920x1080-1280x720",
     {"libyuv-box": "libyuv box", "zimg-bicubic-avx512": "zimg bicubic, avx512", "zimg-bicubic": "zimg bicubic",
      "swscale-bicubic": "swscale bicubic"}),
    ("Enlarge a decoded frame\n640x360 to 1280x720", "post-automatic/640x360-1280x720",
     {"zimg-lanczos-avx512": "zimg Lanczos, avx512", "zimg-lanczos": "zimg Lanczos",
      "swscale-lanczos": "swscale Lanczos"}),
    ("Remove noise\n1280x720", "denoise/1280x720",
     {"avfilter-hqdn3d": "hqdn3d", "avfilter-atadenoise": "atadenoise"}),
    ("Remove noise and halve\n1280x720 to 640x360", "denoise-and-scale/1280x720-640x360",
     {"avfilter-hqdn3d+scale": "hqdn3d, scale"}),
    ("Deblock\n1280x720", "deblock/1280x720", {"postproc-hb+vb": "libpostproc hb/vb"}),
]

# What each work is, in the order of the page.
WORKS = {
    "automatic": "Checked interface: I420, automatic filter, 8 + 4 taps",
    "automatic16": "Checked interface: I420, automatic filter, 16 + 8 taps",
    "automatic-nv12": "Checked interface: NV12, automatic filter, 8 + 4 taps",
    "post-automatic": "Checked interface: I420 decoded and enlarged, automatic filter, 8 + 4 taps",
    "denoise": "Checked interface: denoising of I420, edge 1, softening 10, history 100",
    "denoise16": "Checked interface: denoising of I420 with 16 + 8 taps, edge 1, softening 100, history 100",
    "denoise-and-scale": "Checked interface: I420, denoising (softening 10) and scaling in one call",
    "scale10": "Plain scaler, softening level 10",
    "scale0": "Plain scaler, softening level 0",
    "lumashift": "Plain scaler with luma gain and offset, softening level 10",
    "postscale": "Post-processor scaler, two sincs, enhancement strength 1",
    "adaptive": "Edge-preserving scaler with temporal blend, softening level 10",
    "adaptive16": "Edge-preserving scaler with 16 + 8 taps and temporal blend, softening level 10",
    "adaptive16noblend": "Edge-preserving scaler with 16 + 8 taps, without temporal blend, softening level 10",
    "smoothing": "Edge-preserving scaler with motion smoothing and temporal blend, softening level 10",
    "temporal": "Temporal noise filter, same size",
    "deblock": "Deblocking of the 8 x 8 grid, level 30, in place",
    "nv12": "Plain scaler between NV12 frames",
    "noise": "Dither noise of strength 8, in place",
    "exposure": "Watching the exposure",
    "setup": "Repeated set-up with another enhancement strength",
    "memory": "Plain scaler at 2:1, softening level 10, frames from memory",
}


def read_results(path):
    """{work: {sizes: {contestant: fewest milliseconds}}} and the run's context."""
    data = json.loads(Path(path).read_text())
    results = defaultdict(lambda: defaultdict(dict))
    for run in data["benchmarks"]:
        if run.get("run_type") != "iteration" or run.get("error_occurred"):
            continue
        work, sizes, contestant = run["run_name"].split("/")
        fastest = results[work][sizes]
        fastest[contestant] = min(run["ms"], fastest.get(contestant, run["ms"]))
    return results, data["context"]


def pixels(size):
    width, height = map(int, size.split("x"))
    return width * height


def ends(sizes):
    """Source and destination of "IN-OUT", or of "SIZE" for both."""
    source, _, destination = sizes.partition("-")
    return source, destination or source


class Limits:
    """What the machine did at most in the same run."""

    def __init__(self, results):
        def fastest(work):
            return next(iter(results.get(work, {}).items()), (None, {}))

        sizes, by_width = fastest("limit-multiply")
        # 32 multiplications for each of two bytes a pixel.
        self.multiplies_per_ms = {k: 64 * pixels(sizes) / ms for k, ms in by_width.items()}
        self.copy_bytes_per_ms = {}
        for place in ("cache", "memory"):
            sizes, copies = fastest(f"limit-copy-{place}")
            if copies:
                self.copy_bytes_per_ms[place] = 4 * pixels(sizes) / copies["memcpy"]

    def multiply_ms(self, sizes):
        source, destination = ends(sizes)
        width = int(source.split("x")[0])
        height = int(destination.split("x")[1])
        vertical = 2 * width * height * SCALE_TAPS // 2
        horizontal = 2 * pixels(destination) * SCALE_TAPS
        return (vertical + horizontal) / max(self.multiplies_per_ms.values())

    def copy_ms(self, sizes, place, bytes_per_pixel=2.0):
        return bytes_per_pixel * sum(map(pixels, ends(sizes))) / self.copy_bytes_per_ms[place]

    def rows(self, work, all_sizes):
        """Rows to put under a work's table."""
        rows = []
        if work in ("scale10", "scale0", "memory") and self.multiplies_per_ms:
            rows.append(("*multiplications*", [self.multiply_ms(s) for s in all_sizes]))
        place = "memory" if work == "memory" else "cache"
        if any("-" in s for s in all_sizes) and work != "setup" and place in self.copy_bytes_per_ms:
            bytes_per_pixel = 1.5 if work in PLANAR_420 else 2.0
            rows.append(("*source in, destination out*", [self.copy_ms(s, place, bytes_per_pixel) for s in all_sizes]))
        return rows

    def sentence(self):
        parts = [f"{rate / 1e6:.0f} 16-bit multiplications a nanosecond with vectors of {width.replace('-', ' ')}"
                 for width, rate in sorted(self.multiplies_per_ms.items())]
        places = {"cache": "a cache", "memory": "memory"}
        parts += [f"copies from {places[place]} at {rate / 1e6:.1f} GB/s (read and written)"
                  for place, rate in self.copy_bytes_per_ms.items()]
        return "; ".join(parts)


def own_levels(contestants):
    return [level for level in LEVELS if OWN + level in contestants]


def in_order(contestants, column):
    """This library by level, then the others, fastest first."""
    own = [OWN + level for level in own_levels(contestants)]
    others = sorted((c for c in contestants if c not in own), key=lambda c: column.get(c, float("inf")))
    return own + others


def cell(ms, column):
    if ms is None:
        return ""
    ratios = [f"{ms / column[OWN + level]:.2f}" for level in SHOWN_AS_RATIO if OWN + level in column]
    text = f"{ms:.4f}" if ms < 0.1 else f"{ms:.3f}" if ms < 10 else f"{ms:.1f}"
    return f"{text} ({' / '.join(ratios)})" if ratios else text


def table(work, by_sizes, limits):
    all_sizes = sorted(by_sizes, key=lambda s: list(map(pixels, reversed(ends(s)))))
    contestants = {c for column in by_sizes.values() for c in column}
    lines = ["| ms | " + " | ".join(s.replace("-", " to ") for s in all_sizes) + " |",
             "|---|" + "---:|" * len(all_sizes)]
    for contestant in in_order(contestants, by_sizes[all_sizes[0]]):
        cells = [cell(by_sizes[s].get(contestant), by_sizes[s]) for s in all_sizes]
        lines.append(f"| {contestant} | " + " | ".join(cells) + " |")
    for name, values in limits.rows(work, all_sizes):
        lines.append(f"| {name} | " + " | ".join(cell(v, by_sizes[s]) for v, s in zip(values, all_sizes)) + " |")
    return "\n".join(lines)


def processor():
    try:
        return re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text()).group(1)
    except (OSError, AttributeError):
        return "an unnamed processor"


def write_page(results, context, path):
    limits = Limits(results)
    levels = sorted({level for by_sizes in results.values() for column in by_sizes.values()
                     for level in own_levels(column)}, key=LEVELS.index)
    shown = [level for level in SHOWN_AS_RATIO if level in levels]
    caches = ", ".join(f"L{c['level']}{c['type'][0].lower() if c['level'] == 1 else ''} {c['size'] // 1024} KiB"
                       for c in context.get("caches", []))
    lines = [
        "# Performance",
        "",
        "Written by `scripts/bench`, which installs the other libraries, times everything in one interleaved run and "
        "replaces this page.",
        "",
        f"Measured on {processor()} ({caches}), {context['date'][:10]}, one thread.",
        "",
        "Milliseconds of one frame: the fastest of many runs in random order, by the thread's own time. Frames are a "
        "synthetic camera scene; they stay warm in a cache except where the title says otherwise. I420 goes in and out "
        "as it is, the best case of all. Where the title does not name I420 or NV12, frames are packed 4:2:2: zimg and "
        "libyuv convert to planes and back, which is timed; the FFmpeg filters get the planes they want, which is "
        "not.",
        "",
        f"In brackets: times as long as this library at {', '.join(shown) or 'its levels'}.",
        "",
        f"Limits of the machine in the same run: {limits.sentence()}. In the tables, *multiplications* is the time for "
        "all 8 + 4 taps as 16-bit products, which a kernel beats that skips taps of zero or multiplies bytes in pairs; "
        "*source in, destination out* is the time for reading and writing each frame once.",
        "",
        "![Milliseconds of a frame beside other libraries](performance.png)",
    ]
    for work, title in WORKS.items():
        if work in results:
            lines += ["", f"## {title}", "", table(work, results[work], limits)]
    path.write_text("\n".join(lines) + "\n")


def draw(results, path):
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    panels = [(title, results[work][sizes], peers) for title, place, peers in PANELS
              for work, sizes in [place.split("/")] if sizes in results.get(work, {})]
    if not panels:
        return
    rows = (len(panels) + 1) // 2
    figure, axes = plt.subplots(rows, 2, figsize=(9, 2.3 * rows), squeeze=False)
    for axis, panel in zip(axes.flat, panels):
        draw_panel(axis, *panel)
    for axis in list(axes.flat)[len(panels):]:
        axis.set_axis_off()
    figure.suptitle("Milliseconds of a frame on one core: shorter is better", fontsize=13)
    figure.tight_layout()
    figure.savefig(path, dpi=100)


def draw_panel(axis, title, column, peers):
    """Bars of this library at its widest levels and of the peers, with how much longer these take."""
    levels = [level for level in own_levels(column) if level in SHOWN_AS_RATIO and level != "avx512"]
    own = [(f"vidproc, {level}", column[OWN + level]) for level in levels]
    others = sorted(((name, column[peer]) for peer, name in peers.items() if peer in column), key=lambda bar: bar[1])
    names, heights = zip(*own, *others)
    bars = axis.barh(names, heights, color=["tab:green"] * len(own) + ["silver"] * len(others))
    fastest = min(height for _, height in own)
    labels = [f"{height:.2g} ms" for _, height in own]
    labels += [f"{height:.2g} ms, {height / fastest:.1f} x" for _, height in others]
    axis.bar_label(bars, labels, padding=3, fontsize=10)
    axis.invert_yaxis()
    axis.set_title(title, fontsize=11, loc="left")
    axis.set_xlim(0, 1.45 * max(heights))
    axis.xaxis.set_visible(False)
    axis.tick_params(axis="y", labelsize=10, length=0)
    for side in ("top", "right", "bottom"):
        axis.spines[side].set_visible(False)


def main():
    results, context = read_results(sys.argv[1])
    if not results:
        sys.exit("no results")
    directory = Path(sys.argv[2])
    write_page(results, context, directory / "performance.md")
    draw(results, directory / "performance.png")


if __name__ == "__main__":
    main()
