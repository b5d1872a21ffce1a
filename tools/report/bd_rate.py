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


def mean_gap(anchor, tested):
    """By how much `tested` lies above on average, and the range that both reach; both are lists of (x, y), x rising.

    None where the curves have no range in common.
    """
    if len(anchor) < 2 or len(tested) < 2:
        return None, None
    low, high = max(anchor[0][0], tested[0][0]), min(anchor[-1][0], tested[-1][0])
    if high <= low:
        return None, None
    areas = [integral(*numpy.array(points).T, low, high) for points in (anchor, tested)]
    return (areas[1] - areas[0]) / (high - low), (low, high)


def bd_rate(anchor, tested):
    """Per cent of bits more (less: negative) at equal quality, and the range of quality that both reach.

    Both are lists of (quality, bits). None where the curves have no range in common.
    """
    gap, common = mean_gap(*([(quality, numpy.log(bits)) for quality, bits in rising(points)]
                             for points in (anchor, tested)))
    return (None if gap is None else 100 * (float(numpy.exp(gap)) - 1)), common


def bd_quality(anchor, tested):
    """Quality gained (lost: negative) at equal bits; otherwise as bd_rate."""
    gap, _ = mean_gap(*([(numpy.log(bits), quality) for quality, bits in rising(points)]
                        for points in (anchor, tested)))
    return gap
