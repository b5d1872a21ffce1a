"""How fast denoisers forget: what a picture is off after a cut, and behind an edge that moves over it."""

import numpy

NOISE = "noise=alls=8:allf=t:all_seed=1"
STILL_FRAMES = 20
AFTER_CUT = (1, 2)
EDGE_STEP = 6  # columns a frame
CONTRASTS = (8, 16, 32, 64)
FLAT_BLOCK = 8
FLAT_VARIANCE = 1


def luma(frames, size):
    width, height = size
    return frames[..., :width * height].reshape(*frames.shape[:-1], height, width)


def turned(frame, size):
    """The same picture turned by half: another one with the same histogram."""
    area = size[0] * size[1]
    planes = numpy.split(frame, [area, (area + len(frame)) // 2])
    return numpy.concatenate([plane[::-1] for plane in planes])


def moving_edge(frame, size, contrast):
    """Luma is brighter from an edge on that moves to the right. @return the frames and the last one's edge"""
    frames = numpy.stack([frame] * STILL_FRAMES)
    edges = size[0] // 4 + EDGE_STEP * numpy.arange(STILL_FRAMES)
    for picture, edge in zip(luma(frames, size), edges):
        picture[:, edge:] = numpy.minimum(picture[:, edge:].astype(int) + contrast, 235)
    return frames, edges[-1]


def flat_places(frame, size):
    """Which luma samples lie in blocks without texture."""
    rows, columns = size[1] // FLAT_BLOCK, size[0] // FLAT_BLOCK
    blocks = luma(frame, size)[:rows * FLAT_BLOCK, :columns * FLAT_BLOCK].reshape(rows, FLAT_BLOCK, columns, FLAT_BLOCK)
    flat = numpy.zeros((size[1], size[0]), bool)
    flat[:rows * FLAT_BLOCK, :columns * FLAT_BLOCK] = numpy.kron(blocks.var(axis=(1, 3)) < FLAT_VARIANCE,
                                                               numpy.ones((FLAT_BLOCK, FLAT_BLOCK), bool))
    return flat


def hqdn3d(strength):
    """In the proportions of FFmpeg's own."""
    return f"hqdn3d={4 * strength:.2f}:{3 * strength:.2f}:{6 * strength:.2f}:{4.5 * strength:.2f}"


class Response:
    """Of vidproc, and of hqdn3d as strong as leaves the same noise on the flat parts of a still picture."""

    def __init__(self, store, clean, settings):
        self.store, self.settings, self.clean, self.size = store, settings, clean, clean.size
        self.frame = clean.frames()[0]
        still = numpy.stack([self.frame] * STILL_FRAMES)
        flat = flat_places(self.frame, self.size)
        self.flat_noise = self._deviation(self._ours, "still", still, STILL_FRAMES - 1, flat)
        low, high = 0.1, 10
        while high / low > 1.01:
            self.strength = (low * high) ** 0.5
            if self._deviation(self._hqdn3d, "still", still, STILL_FRAMES - 1, flat) > self.flat_noise:
                low = self.strength
            else:
                high = self.strength

    def rows(self):
        """(where, that of hqdn3d, that of vidproc)"""
        after = numpy.stack([self.frame] * STILL_FRAMES + [turned(self.frame, self.size)] * (max(AFTER_CUT) + 1))
        for frames_later in AFTER_CUT:
            frames_after = f"{frames_later} frame{'s' * (frames_later > 1)} after"
            yield f"{frames_after} a cut", *self._both("cut", after, STILL_FRAMES + frames_later, ...)
        for contrast in CONTRASTS:
            frames, edge = moving_edge(self.frame, self.size, contrast)
            behind = (slice(None), slice(edge - 2 * EDGE_STEP, edge))
            yield f"behind an edge of {contrast} levels", *self._both(f"edge {contrast}", frames, -1, behind)

    def _both(self, *place):
        return [self._deviation(chain, *place) for chain in (self._hqdn3d, self._ours)]

    def _deviation(self, chain, name, clean_frames, number, places):
        """Root mean square of a denoised frame's difference from the clean one, in luma levels."""
        clean = self.store.make(f"{self.clean.recipe} | {name}", self.size, clean_frames.tofile)
        made = chain(self.store.filtered(clean, NOISE)).frames()[number]
        difference = luma(made, self.size)[places].astype(float) - luma(clean_frames[number], self.size)[places]
        return float(numpy.sqrt(numpy.mean(numpy.square(difference))))

    def _ours(self, stream):
        return self.store.processed(stream, "pre", self.settings, self.size)

    def _hqdn3d(self, stream):
        return self.store.filtered(stream, hqdn3d(self.strength))
