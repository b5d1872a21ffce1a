"""Pictures of the report."""

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as pyplot
from matplotlib import ticker


def draw_curves(curves, ours, anchor, path):
    """Bits against luma PSNR and SSIM: ours and the anchor in colour, the others grey with their names."""
    figure, panels = pyplot.subplots(1, 2, figsize=(11, 4.5))
    for panel, (measure, label) in zip(panels, (("psnr", "luma PSNR, dB"), ("ssim", "luma SSIM"))):
        for name, points in curves.items():
            if "lanczos" in name or "screen" in name:
                continue
            colour = {ours: "#d03020", anchor: "#2060c0"}.get(name, "#9a9a9a")
            values = [getattr(point, measure)[0] for point in points]
            bits = [point.bits for point in points]
            panel.plot(bits, values, marker="o", markersize=4, color=colour, linewidth=2.2 if name == ours else 1.2)
            panel.annotate(name.removesuffix(", bicubic"), (bits[0], values[0]), textcoords="offset points",
                           xytext=(5, -3), fontsize=8, color=colour)
        panel.set_xscale("log")
        panel.xaxis.set_major_locator(ticker.LogLocator(subs=(1, 2, 5)))
        panel.xaxis.set_major_formatter(ticker.ScalarFormatter())
        panel.xaxis.set_minor_formatter(ticker.NullFormatter())
        panel.set_xlabel("kbit/s")
        panel.set_ylabel(label)
        panel.margins(x=0.25)
        panel.grid(True, which="both", color="#e4e4e4", linewidth=0.6)
        panel.set_axisbelow(True)
    figure.suptitle("Bits against quality, 2:1, noise 4.2", fontsize=11)
    figure.tight_layout()
    figure.savefig(path, dpi=90)
    pyplot.close(figure)


def draw_crops(frames, size, path):
    """The middle of each I420 frame's luma, side by side."""
    width, height = size
    crop_width, crop_height = min(width, 200), min(height, 200)
    left, top = (width - crop_width) // 2, (height - crop_height) // 3
    figure, panels = pyplot.subplots(1, len(frames), figsize=(2.6 * len(frames), 3))
    for panel, (title, frame) in zip(panels, frames.items()):
        luma = frame[:width * height].reshape(height, width)
        panel.imshow(luma[top:top + crop_height, left:left + crop_width], cmap="gray", vmin=16, vmax=235)
        panel.set_title(title, fontsize=8)
        panel.axis("off")
    figure.tight_layout()
    figure.savefig(path, dpi=110)
    pyplot.close(figure)
