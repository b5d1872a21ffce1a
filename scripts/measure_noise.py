"""Prints how much luma varies over time where the picture is flat, and how far clips are from one without noise.

measure_noise.py [--clean CLEAN.y4m] BEFORE.y4m CLIP.y4m...: BEFORE says where the picture is flat: in that tenth of a
grid's cells whose averages over time have the least structure. Prints one line: the deviation of luma in those cells for
BEFORE and each CLIP, then, where CLEAN is given, the PSNR of each CLIP's luma against it, in dB.
"""

import argparse
import re
import sys

import numpy as np

SETTLING = 8  # frames until a filter over time has seen enough
COLUMNS, ROWS = 20, 12


def read_luma(path):
    """The frames of an 8-bit Y4M file from SETTLING on, as an array: time, row, column."""
    with open(path, "rb") as file:
        header = file.readline().decode()
        width, height = int(re.search(r" W(\d+)", header)[1]), int(re.search(r" H(\d+)", header)[1])
        chroma_rows = height if " C422" in header else (height + 1) // 2
        frame_bytes = width * height + (width + 1) // 2 * 2 * chroma_rows
        frames = []
        while file.readline().startswith(b"FRAME"):
            luma = file.read(frame_bytes)[: width * height]
            frames.append(np.frombuffer(luma, np.uint8).reshape(height, width))
    if len(frames) < SETTLING + 2:
        sys.exit(f"{len(frames)} frames are too few to measure noise over time; {SETTLING + 2} would do")
    return np.stack(frames[SETTLING:])


def cells(picture):
    """The picture's cells, whose number does not depend on its size."""
    height, width = picture.shape[-2:]
    for row in range(ROWS):
        for column in range(COLUMNS):
            yield picture[
                ...,
                row * height // ROWS : (row + 1) * height // ROWS,
                column * width // COLUMNS : (column + 1) * width // COLUMNS,
            ]


def deviations(clip):
    """Of each cell: the deviation over time, as the root of the mean of its samples' variances."""
    return np.array([np.sqrt(cell.var(axis=0, ddof=1).mean()) for cell in cells(clip.astype(np.float32))])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--clean")
    parser.add_argument("clips", nargs="+")
    arguments = parser.parse_args()
    clips = [read_luma(path) for path in arguments.clips]
    structure = np.array([cell.std() if 20 < cell.mean() < 230 else np.inf for cell in cells(clips[0].mean(axis=0))])
    flat = np.argsort(structure)[: COLUMNS * ROWS // 10]
    results = [f"{np.sqrt((deviations(clip)[flat] ** 2).mean()):.2f}" for clip in clips]
    if arguments.clean:
        clean = read_luma(arguments.clean).astype(np.float32)
        results += [f"{10 * np.log10(255**2 / ((clip - clean) ** 2).mean()):.1f}" for clip in clips[1:]]
    print(*results)


main()
