"""Draws how frames lie in memory and where their samples lie in the picture: formats.py DIRECTORY"""

import pathlib
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as pyplot
from matplotlib.patches import Rectangle

LUMA, CB, CR, PADDING, INK = "#f2e3a0", "#a9c6ee", "#f0b3ac", "#ececec", "#303030"
COLOURS = {"Y": LUMA, "U": CB, "V": CR, "-": PADDING}
NAMES = {"Y": "Y", "U": "Cb", "V": "Cr"}


def figure_of(width, height):
    """A figure without margins whose units are a byte's side, `width` x `height` of them."""
    figure = pyplot.figure(figsize=(width * 0.42, height * 0.42))
    axes = figure.add_axes((0, 0, 1, 1))
    axes.set_xlim(0, width)
    axes.set_ylim(height, 0)
    axes.axis("off")
    return figure, axes


def save(figure, path):
    figure.savefig(path, metadata={"Date": None})
    pyplot.close(figure)


def write(axes, x, y, text, **options):
    axes.text(x, y, text, **{"fontsize": 9, "color": INK, "va": "center", **options})


def draw_rows(axes, left, top, rows, numbers=True):
    """Rows of bytes; a byte is a letter of COLOURS, with the sample's number behind it where it has one."""
    for y, row in enumerate(rows):
        for x, byte in enumerate(row):
            axes.add_patch(Rectangle((left + x, top + y), 1, 1, facecolor=COLOURS[byte[0]], edgecolor=INK, lw=0.7))
            name = NAMES.get(byte[0], "") + (byte[1:] if numbers else "")
            write(axes, left + x + 0.5, top + y + 0.5, name, fontsize=7.5, ha="center")


def luma_rows(width, height):
    return [[f"Y{y * width + x}" for x in range(width)] for y in range(height)]


def packed(order, width, height):
    """Rows of pairs, each `order` long."""
    rows = []
    for y in range(height):
        row, luma = [], 0
        for byte in order * (width // 2):
            row.append(f"Y{y * width + luma}" if byte == "Y" else f"{byte}{y * (width // 2) + len(row) // 4}")
            luma += byte == "Y"
        rows.append(row)
    return rows


def plane(component, width, height):
    return [[f"{component}{y * width + x}" for x in range(width)] for y in range(height)]


def pairs(width, height):
    return [[f"{c}{y * width + x}" for x in range(width) for c in "UV"] for y in range(height)]


def draw_formats(path):
    """A frame of 4 x 4 pixels in every format, plane by plane."""
    figure, axes = figure_of(32, 12.5)
    shown = [
        (0.5, 1.5, "UYVY: plane[0]", packed("UYVY", 4, 4)),
        (10.5, 1.5, "YUYV: plane[0]", packed("YUYV", 4, 4)),
        (20.5, 1.5, "NV12: plane[0]", luma_rows(4, 4)),
        (25.5, 1.5, "plane[1]", pairs(2, 2)),
        (0.5, 8, "I420: plane[0]", luma_rows(4, 4)),
        (5.5, 8, "plane[1]", plane("U", 2, 2)),
        (8.5, 8, "plane[2]", plane("V", 2, 2)),
        (13.5, 8, "I422: plane[0]", luma_rows(4, 4)),
        (18.5, 8, "plane[1]", plane("U", 2, 4)),
        (21.5, 8, "plane[2]", plane("V", 2, 4)),
    ]
    for left, top, title, rows in shown:
        write(axes, left, top - 0.6, title)
        draw_rows(axes, left, top, rows)
    save(figure, path)


def draw_strides(path):
    """A plane with padding, as it is and bottom-up."""
    figure, axes = figure_of(33, 7.4)
    rows = [["Y"] * 6 + ["-"] * 2 for _ in range(4)]
    rows[3] = rows[3][:6]
    for left, title, bottom_up in ((3.5, "stride[0] = 8", False), (21.5, "stride[0] = -8", True)):
        write(axes, left, 0.8, title, fontweight="bold")
        numbered = [[byte if byte == "-" else f"Y{y}" for byte in row] for y, row in enumerate(rows)]
        if bottom_up:
            numbered = [[byte if byte == "-" else f"Y{3 - int(byte[1])}" for byte in row] for row in numbered]
        draw_rows(axes, left, 2, numbered)
        first = 5.5 if bottom_up else 2.5
        axes.annotate("", (left, first), (left - 1.1, first), arrowprops={"arrowstyle": "->", "color": INK})
        write(axes, left - 1.2, first, "plane[0]", ha="right", fontsize=8)
        axes.annotate("", (left + 8.6, 2.5 if bottom_up else 5.5), (left + 8.6, 5.5 if bottom_up else 2.5),
                      arrowprops={"arrowstyle": "->", "color": INK})
        write(axes, left + 8.9, 4, "rows of the picture", fontsize=8, rotation=270, ha="left")
        write(axes, left, 6.7, "bytes[0]: 30, up to here or more", fontsize=8)
    save(figure, path)


def draw_odd_widths(path):
    """The last pair of packed rows of 3 pixels."""
    figure, axes = figure_of(33, 4.3)
    for left, title, row in (
        (0.5, "room for the last pair: stride 8 or more", ["U0", "Y0", "V0", "Y1", "U1", "Y2", "V1", "Y2"]),
        (18.5, "no room for it: stride 6 or 7", ["U0", "Y0", "V0", "Y1", "U1", "Y2", "-"]),
    ):
        write(axes, left, 0.8, title)
        draw_rows(axes, left, 1.6, [row])
    write(axes, 0.5, 3.7, "written: the last Y once more; read: ignored", fontsize=8)
    write(axes, 18.5, 3.7, "Cr0 serves the last pixel too; the byte behind is left alone", fontsize=8)
    save(figure, path)


def draw_siting(path):
    """Where chroma samples lie between luma samples."""
    figure, panels = pyplot.subplots(1, 4, figsize=(11, 2.9))
    for panel, (title, column, row, step) in zip(panels, (
        ("4:2:2, left", 0, 0, 1), ("4:2:2, centre", 0.5, 0, 1), ("4:2:0, left", 0, 0.5, 2), ("4:2:0, centre", 0.5, 0.5, 2),
    )):
        panel.scatter(*zip(*((x, y) for x in range(6) for y in range(4))), s=70, color="white", edgecolor=INK)
        chroma = [(x + column, y + row) for x in range(0, 6, 2) for y in range(0, 4, step)]
        panel.scatter(*zip(*chroma), s=60, marker="x", color="#c03028", linewidths=2)
        panel.set_title(title, fontsize=10)
        panel.set_xlim(-0.6, 5.6)
        panel.set_ylim(3.6, -0.6)
        panel.set_aspect("equal")
        panel.axis("off")
    figure.tight_layout()
    save(figure, path)


def draw_alignment(path):
    """Which input positions eight samples become four for."""
    figure, panels = pyplot.subplots(2, 1, figsize=(9, 2.9))
    for panel, (title, first) in zip(panels, (("centres", 0.5), ("corners", 0))):
        panel.hlines(0, -0.5, 7.5, color="#b0b0b0", lw=1)
        panel.vlines((-0.5, 7.5), -0.3, 0.3, color="#b0b0b0", lw=1)
        panel.scatter(range(8), [0] * 8, s=60, color="white", edgecolor=INK, zorder=2)
        outputs = [first + 2 * k for k in range(4)]
        panel.scatter(outputs, [0] * 4, s=60, marker="x", color="#c03028", linewidths=2, zorder=3)
        for place in outputs:
            panel.text(place, 0.45, f"{place:g}", ha="center", fontsize=8, color="#c03028")
        panel.text(-0.9, 0, title, ha="right", va="center", fontsize=10)
        panel.set_xlim(-1.8, 8)
        panel.set_ylim(-0.6, 0.9)
        panel.axis("off")
    figure.tight_layout()
    save(figure, path)


def main():
    directory = pathlib.Path(sys.argv[1])
    # The same bytes in every run, and text that any viewer's font can show.
    pyplot.rcParams.update({"svg.hashsalt": "vidproc", "svg.fonttype": "none", "font.family": "sans-serif"})
    for name, draw in (
        ("formats", draw_formats), ("strides", draw_strides), ("odd-widths", draw_odd_widths), ("siting", draw_siting),
        ("alignment", draw_alignment),
    ):
        draw(directory / f"{name}.svg")


main()
