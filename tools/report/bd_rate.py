"""The change in bits at equal quality (Bjontegaard), of curves that need not rise everywhere."""

import numpy


def rising(points):
    """(quality, bits) in ascending quality without the points that cost more bits for no more quality."""
    kept = []
    for quality, bits in sorted(points, key=lambda point: point[1]):
        if not kept or quality > kept[-1][0]:
            kept.append((quality, bits))
    return kept


def slopes(x, y):
    """Of a monotone piecewise cubic (Fritsch, Butland): no overshoot between the points."""
    steps = numpy.diff(x)
    secants = numpy.diff(y) / steps
    result = numpy.empty(len(x))
    result[0], result[-1] = secants[0], secants[-1]
    for i in range(1, len(x) - 1):
        a, b = secants[i - 1], secants[i]
        wa, wb = 2 * steps[i] + steps[i - 1], steps[i] + 2 * steps[i - 1]
        result[i] = (wa + wb) / (wa / a + wb / b) if a * b > 0 else 0
    return result


def integral(x, y, low, high):
    """Of the piecewise cubic through the points, by fine steps."""
    m = slopes(x, y)
    at = numpy.linspace(low, high, 401)
    i = numpy.clip(numpy.searchsorted(x, at) - 1, 0, len(x) - 2)
    h = x[i + 1] - x[i]
    t = (at - x[i]) / h
    value = ((1 + 2 * t) * (1 - t) ** 2 * y[i] + t * (1 - t) ** 2 * h * m[i] + t * t * (3 - 2 * t) * y[i + 1] +
             t * t * (t - 1) * h * m[i + 1])
    return float(numpy.sum((value[1:] + value[:-1]) / 2) * (at[1] - at[0]))


def bd_rate(anchor, tested):
    """Per cent of bits more (less: negative) at equal quality, and the range of quality that both reach.

    Both are lists of (quality, bits). None where the curves have no range in common.
    """
    a, b = rising(anchor), rising(tested)
    if len(a) < 2 or len(b) < 2:
        return None, None
    low, high = max(a[0][0], b[0][0]), min(a[-1][0], b[-1][0])
    if high <= low:
        return None, None
    areas = []
    for points in (a, b):
        quality = numpy.array([q for q, _ in points])
        areas.append(integral(quality, numpy.log([bits for _, bits in points]), low, high))
    return 100 * (float(numpy.exp((areas[1] - areas[0]) / (high - low))) - 1), (low, high)
