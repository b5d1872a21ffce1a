"""Turns the JSON of one run of vidproc_bench into a page of tables and its picture.

report.py RESULTS.json DIRECTORY: writes DIRECTORY/performance.md and DIRECTORY/performance.png.
"""

import json
import re
import sys
from collections import defaultdict
from pathlib import Path

OWN = "vidproc-"
LEVELS = ["scalar", "sse2", "sse41", "avx2", "avx512", "avx512vbmi", "neon"]  # as the library orders them
SHOWN_AS_RATIO = ["avx2", "avx512", "avx512vbmi", "neon"]
SCALE_TAPS = 8  # horizontal; half as many vertical ones

# What each work is, in the order of the page.
WORKS = {
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
            bytes_per_pixel = 1.5 if work == "nv12" else 2.0
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
        "synthetic camera scene; they stay warm in a cache except where the title says otherwise. Packed 4:2:2 in and "
        "out: zimg and libyuv convert to planes and back, which is timed; the FFmpeg filters get the planes they want, "
        "which is not.",
        "",
        f"In brackets: times as long as this library at {', '.join(shown) or 'its levels'}.",
        "",
        f"Limits of the machine in the same run: {limits.sentence()}. In the tables, *multiplications* is the time for "
        "all 8 + 4 taps as 16-bit products, which a kernel beats that skips taps of zero or multiplies bytes in pairs; "
        "*source in, destination out* is the time for reading and writing each frame once.",
        "",
        "![Ratios to the other libraries, and time per output pixel](performance.png)",
    ]
    for work, title in WORKS.items():
        if work in results:
            lines += ["", f"## {title}", "", table(work, results[work], limits)]
    path.write_text("\n".join(lines) + "\n")


def draw(results, path):
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    figure, (ratios, per_pixel) = plt.subplots(1, 2, figsize=(14, 8), width_ratios=(3, 2))

    bars = []
    for work in (w for w in WORKS if w in results and w != "memory"):
        for sizes, column in results[work].items():
            levels = [level for level in own_levels(column) if level in SHOWN_AS_RATIO]
            if not levels:
                continue
            for peer in sorted((c for c in column if not c.startswith(OWN)), key=column.get):
                own = column[OWN + levels[-1]]
                bars.append((f"{work} {sizes}: {peer}", column[peer] / own, f"{column[peer]:.3g} / {own:.3g} ms"))
    bars.reverse()
    names, heights, labels = zip(*bars) if bars else ([], [], [])
    drawn = ratios.barh(names, heights, color=["tab:green" if h >= 1 else "tab:red" for h in heights])
    ratios.bar_label(drawn, labels, fontsize=5, padding=2)
    ratios.tick_params(axis="y", labelsize=6)
    ratios.set_xscale("log")
    ratios.axvline(1, color="black", linewidth=0.8)
    ratios.set_xlabel("time of the other / time of this library at its best level")
    ratios.margins(x=0.12, y=0.01)

    by_sizes = sorted(results.get("memory", {}).items(), key=lambda item: pixels(item[0].split("-")[1]))
    contestants = {c for _, column in by_sizes for c in column if c != OWN + "scalar"}
    for contestant in sorted(contestants):
        points = [(pixels(s.split("-")[1]), column[contestant]) for s, column in by_sizes if contestant in column]
        per_pixel.plot([p for p, _ in points], [1e6 * ms / p for p, ms in points], marker="o", label=contestant,
                       linestyle="-" if contestant.startswith(OWN) else "--")
    limits = Limits(results)
    if by_sizes and "memory" in limits.copy_bytes_per_ms:
        per_pixel.plot([pixels(s.split("-")[1]) for s, _ in by_sizes],
                       [1e6 * limits.copy_ms(s, "memory") / pixels(s.split("-")[1]) for s, _ in by_sizes],
                       color="grey", linestyle=":", label="source in, destination out")
    per_pixel.set(xscale="log", yscale="log", xlabel="output pixels (2:1, frames from memory)",
                  ylabel="ns per output pixel")
    if by_sizes:
        per_pixel.legend(fontsize=7, loc="upper center", bbox_to_anchor=(0.5, -0.08), ncols=2)
    figure.tight_layout()
    figure.savefig(path, dpi=110)


def main():
    results, context = read_results(sys.argv[1])
    if not results:
        sys.exit("no results")
    directory = Path(sys.argv[2])
    write_page(results, context, directory / "performance.md")
    draw(results, directory / "performance.png")


if __name__ == "__main__":
    main()
