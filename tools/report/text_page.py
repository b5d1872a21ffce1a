"""A page of text that scrolls, as when a screen is shared."""

import numpy
from matplotlib.backends.backend_agg import FigureCanvasAgg
from matplotlib.figure import Figure
from matplotlib.lines import Line2D

WORDS = ("Frames arrive in order and leave in order. Each row is read once, kept while its neighbours need it and then "
         "forgotten; nothing waits for a whole picture. Small print (0O 1lI 5S 8B) shows first what a scaler loses, "
         "thin rules next, and large letters last of all. ").split()
POINTS = (7, 8, 9, 10, 12)  # of 100 dots an inch
STEP = 2  # rows a frame


def lines_of(columns):
    """Text without an end, broken into lines of so many letters."""
    line, next_word = "", 0
    while True:
        word = WORDS[next_word % len(WORDS)]
        next_word += 1
        if len(line) + 1 + len(word) > columns:
            yield line
            line = word
        else:
            line = f"{line} {word}".strip()


def draw_page(width, height):
    figure = Figure(figsize=(width / 100, height / 100), dpi=100)
    canvas = FigureCanvasAgg(figure)
    y, paragraph = 12, 0
    while y < height:
        points = POINTS[paragraph % len(POINTS)]
        lines = lines_of(int(width * 1.2 / points))
        for _ in range(4):
            figure.text(0.04, 1 - y / height, next(lines), fontsize=points, va="top")
            y += 2 * points
        rule = 1 - (y + 2) / height
        figure.add_artist(Line2D((0.04, 0.96), (rule, rule), linewidth=0.3 * (1 + paragraph % 3), color="black"))
        y, paragraph = y + 10, paragraph + 1
    canvas.draw()
    return numpy.asarray(canvas.buffer_rgba())[..., :3].mean(axis=2)


def text_page(size, count):
    """I420 frames in limited range."""
    width, height = size
    page = numpy.rint(16 + draw_page(width, height + STEP * count) * 219 / 255).astype(numpy.uint8)
    chroma = numpy.full(2 * ((width + 1) // 2) * ((height + 1) // 2), 128, numpy.uint8)
    return numpy.stack([numpy.concatenate([page[STEP * i:STEP * i + height].ravel(), chroma]) for i in range(count)])
