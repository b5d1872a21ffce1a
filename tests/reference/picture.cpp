#include "reference/picture.h"

#include <algorithm>
#include <array>

#include "reference/lane.h"

namespace reference {
namespace {

constexpr std::int64_t kSixteenths = 16;

std::int64_t FloorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

/// Samples k of an axis lie at (2 * step * k + twiceOffset) / 2 in luma samples of the picture.
struct Lattice {
  int step;
  int twiceOffset;
};

struct Position {
  int index;
  int phase;
};

/// Where output sample k lies on the input's lattice, when `in` luma samples become `out` after the input has been
/// halved `halvings` times; to the nearest sixteenth.
Position Centred(std::int64_t k, const Lattice& input, const Lattice& output, std::int64_t in, std::int64_t out,
                 int halvings) {
  const std::int64_t scaledOut = out << halvings;
  const std::int64_t denominator = 2 * input.step * scaledOut;
  const std::int64_t numerator =
      kSixteenths * (2 * output.step * k + output.twiceOffset) * in - kSixteenths * input.twiceOffset * scaledOut;
  const std::int64_t sixteenths = FloorDivide(2 * numerator + denominator, 2 * denominator);
  return {static_cast<int>(FloorDivide(sixteenths, 16)),
          static_cast<int>(sixteenths - 16 * FloorDivide(sixteenths, 16))};
}

Position FromCorner(std::int64_t k, std::int64_t in, std::int64_t out) {
  const std::int64_t index = k * in / out;
  return {static_cast<int>(index), static_cast<int>((k * in - index * out) * 16 / out)};
}

/// One axis of one component.
struct Axis {
  Lattice input, output;
  int in, out;        // luma sizes, before any halving
  int componentSize;  // samples of the result
  int halvings;
  bool fromCorner;

  Position At(int k) const {
    return fromCorner ? FromCorner(k, in, std::int64_t{out} << halvings) : Centred(k, input, output, in, out, halvings);
  }
  bool IsIdentity(int inputSize) const {
    if (inputSize != componentSize) return false;
    for (int k = 0; k < componentSize; ++k) {
      const Position position = At(k);
      if (position.index != k || position.phase != 0) return false;
    }
    return true;
  }
};

struct SizedBank {
  int taps;
  int bits;
  Bank phases;
};

std::uint8_t WeighedSum(const SizedBank& bank, int phase, const std::function<int(int)>& sample) {
  std::int64_t sum = std::int64_t{1} << (bank.bits - 1);
  for (int t = 0; t < bank.taps; ++t) {
    sum += std::int64_t{bank.phases[phase][t]} * sample(t - (bank.taps / 2 - 1));
  }
  return static_cast<std::uint8_t>(std::clamp<std::int64_t>(sum >> bank.bits, 0, 255));
}

Plane FilterColumns(const Plane& in, const Axis& axis, const SizedBank& bank) {
  Plane out(in.width, axis.componentSize);
  for (int y = 0; y < out.height; ++y) {
    const Position at = axis.At(y);
    for (int x = 0; x < out.width; ++x) {
      out.At(x, y) = WeighedSum(bank, at.phase, [&](int t) { return in.Nearest(x, at.index + t); });
    }
  }
  return out;
}

Plane FilterRows(const Plane& in, const Axis& axis, const SizedBank& bank) {
  Plane out(axis.componentSize, in.height);
  for (int y = 0; y < out.height; ++y) {
    for (int x = 0; x < out.width; ++x) {
      const Position at = axis.At(x);
      out.At(x, y) = WeighedSum(bank, at.phase, [&](int t) { return in.Nearest(at.index + t, y); });
    }
  }
  return out;
}

/// Samples of the component itself: another ratio than luma's where the sampling changes.
struct OwnRatio {
  int in, out;
};
OwnRatio OwnRatioOf(const Axis& axis) {
  if (axis.fromCorner) return {axis.in, axis.out};
  return {axis.in * axis.output.step, axis.out * axis.input.step};
}

int HalvingsOf(const Axis& axis, int taps) {
  const OwnRatio ratio = OwnRatioOf(axis);
  int halvings = 0;
  while (ratio.in > (std::int64_t{ratio.out} << halvings) * (taps / 2)) ++halvings;
  return halvings;
}

/// Scales one component whose lattices are given per axis.
class ComponentScaler {
 public:
  explicit ComponentScaler(const ScaleSettings& settings) : set(settings) {}

  Plane Run(Plane plane, Axis horizontal, Axis vertical) const {
    const int wantedH = set.halvesFirst ? HalvingsOf(horizontal, set.horizontalTaps) : 0;
    const int wantedV = set.halvesFirst ? HalvingsOf(vertical, set.verticalTaps) : 0;
    for (int h = 0; h < std::max(wantedH, wantedV); ++h) {
      if (h < wantedV)
        plane = FilterColumns(plane, Halving(vertical.input, plane.height), HalvingBank(set.verticalTaps));
      if (h < wantedH)
        plane = FilterRows(plane, Halving(horizontal.input, plane.width), HalvingBank(set.horizontalTaps));
    }
    vertical.halvings = wantedV;
    horizontal.halvings = wantedH;
    const bool staysV = vertical.IsIdentity(plane.height);
    if (set.filtersWithoutResizing || !staysV) {
      plane = FilterColumns(plane, vertical, LastBank(set.verticalTaps, vertical, staysV));
    }
    const bool staysH = horizontal.IsIdentity(plane.width);
    if (set.filtersWithoutResizing || !staysH) {
      plane = FilterRows(plane, horizontal, LastBank(set.horizontalTaps, horizontal, staysH));
    }
    return plane;
  }

 private:
  Axis Halving(const Lattice& lattice, int size) const {
    return {lattice, lattice, 2, 1, (size + 1) / 2, 0, set.fromCorners};
  }

  SizedBank HalvingBank(int taps) const {
    SizedBank bank{taps, 7, {}};
    set.bank({taps, 1, 2, true, false}, bank.phases);
    return bank;
  }
  SizedBank LastBank(int taps, const Axis& axis, bool samePlaces) const {
    SizedBank bank{taps, set.precisionBits, {}};
    const OwnRatio ratio = OwnRatioOf(axis);
    set.bank({taps, ratio.out << axis.halvings, ratio.in, false, samePlaces}, bank.phases);
    return bank;
  }

  const ScaleSettings& set;
};

int Half(int size) { return (size + 1) / 2; }

Lattice ChromaColumns(const Chroma& chroma) { return {2, chroma.centreSited ? 2 : 1}; }
Lattice ChromaRows(const Chroma& chroma) { return chroma.halvedVertically ? Lattice{2, 2} : Lattice{1, 1}; }

/// 4:2:0 chroma with every row standing twice.
Plane RepeatRows(const Plane& in, int height) {
  Plane out(in.width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < in.width; ++x) out.At(x, y) = in.Nearest(x, y / 2);
  }
  return out;
}

/// The second of every two rows; of an odd last one, itself.
Plane DropRows(const Plane& in) {
  Plane out(in.width, Half(in.height));
  for (int y = 0; y < out.height; ++y) {
    for (int x = 0; x < in.width; ++x) out.At(x, y) = in.Nearest(x, 2 * y + 1);
  }
  return out;
}

}  // namespace

std::uint8_t& Plane::At(int x, int y) {
  return samples.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
}

std::uint8_t Plane::Nearest(int x, int y) const {
  const auto row = static_cast<std::size_t>(std::clamp(y, 0, height - 1));
  return samples.at(row * static_cast<std::size_t>(width) + static_cast<std::size_t>(std::clamp(x, 0, width - 1)));
}

Picture Scale(const Picture& in, const ScaleSettings& set) {
  const ComponentScaler scaler(set);
  const Lattice luma{1, 1};
  const auto axis = [&](const Lattice& from, const Lattice& to, int inSize, int outSize, int componentSize) {
    return Axis{from, to, inSize, outSize, componentSize, 0, set.fromCorners};
  };
  Picture out;
  out.chroma = set.outChroma;
  out.y = scaler.Run(in.y, axis(luma, luma, in.y.width, set.outWidth, set.outWidth),
                     axis(luma, luma, in.y.height, set.outHeight, set.outHeight));
  const bool halvedOut = set.outChroma.halvedVertically && !set.fromCorners;
  const Axis columns =
      axis(ChromaColumns(in.chroma), ChromaColumns(set.outChroma), in.y.width, set.outWidth, Half(set.outWidth));
  const Axis rows = axis(ChromaRows(in.chroma), ChromaRows(set.outChroma), in.y.height, set.outHeight,
                         halvedOut ? Half(set.outHeight) : set.outHeight);
  for (const auto& [from, to] : {std::pair{&in.cb, &out.cb}, std::pair{&in.cr, &out.cr}}) {
    const bool repeats = set.fromCorners && in.chroma.halvedVertically;
    *to = scaler.Run(repeats ? RepeatRows(*from, in.y.height) : *from, columns, rows);
    if (set.fromCorners && set.outChroma.halvedVertically) *to = DropRows(*to);
  }
  return out;
}

namespace {

/// Small changes, and by the wrapping square some very large ones, pass for rest.
bool IsStill(int before, int now) { return Wrap16((before - now) * (before - now)) < 256; }

class PlaneDenoiser {
 public:
  PlaneDenoiser(const DenoiseSettings& settings, bool pairsAtBorders) : set(settings), pairs(pairsAtBorders) {}

  Plane Run(const Plane& in, bool hasHistory, Plane& history, Plane& previousInput, Plane& previousVertical) const {
    if (!hasHistory) previousInput = in;
    Plane vertical(in.width, in.height);
    for (int y = 0; y < in.height; ++y) {
      for (int x = 0; x < in.width; ++x) {
        const bool still = !set.motionSmoothing || IsStill(previousInput.At(x, y), in.Nearest(x, y));
        vertical.At(x, y) = Adapt(set.vertical, set.verticalTaps, still, [&](int t) { return in.Nearest(x, y + t); });
      }
    }
    if (!hasHistory) previousVertical = vertical;
    Plane out(in.width, in.height);
    for (int y = 0; y < in.height; ++y) {
      for (int x = 0; x < in.width; ++x) {
        const bool still = !set.motionSmoothing || IsStill(previousVertical.At(x, y), vertical.At(x, y));
        const int value = Adapt(set.horizontal, set.horizontalTaps, still,
                                [&](int t) { return vertical.Nearest(Fold(x + t, in.width), y); });
        out.At(x, y) = hasHistory ? BlendWith(history.At(x, y), value) : ClampToByte(value);
      }
    }
    previousInput = in;
    previousVertical = vertical;
    history = out;
    return out;
  }

 private:
  int Fold(int x, int width) const {
    if (!pairs || (x >= 0 && x < width)) return x;
    return x < 0 ? x & 1 : width - 2 + ((x - width) & 1);
  }

  std::uint8_t Adapt(const std::int16_t* taps, int count, bool still, const std::function<int(int)>& sample) const {
    const int centre = sample(0);
    if (set.edge == 0) return static_cast<std::uint8_t>(centre);
    int sum = 0;
    int others = 0;
    for (int t = 0; t < count; ++t) {
      const int distance = t - (count / 2 - 1);
      if (distance == 0) continue;
      const int square = still ? CappedSquare(sample(distance) - centre) : 0;
      const int weight = (DifferenceWeight(square, set.edge - 1) * taps[t] + 128) >> 8;
      others += weight;
      sum += weight * sample(distance);
    }
    return ClampToByte((sum + (128 - others) * centre + 64) >> 7);
  }

  std::uint8_t BlendWith(int history, int value) const {
    return Blend(value, history, HistoryWeight(CappedSquare(history - value), set.temporalShift, set.temporalStrength));
  }

  const DenoiseSettings& set;
  const bool pairs;
};

}  // namespace

Picture Denoise(const Picture& in, const DenoiseSettings& set, DenoiseState& state) {
  Picture out;
  out.chroma = in.chroma;
  for (Plane Picture::*component : {&Picture::y, &Picture::cb, &Picture::cr}) {
    const PlaneDenoiser denoiser(set, set.pairsAtBorders && component == &Picture::y);
    out.*component = denoiser.Run(in.*component, state.hasHistory, state.history.*component,
                                  state.previousInput.*component, state.previousVertical.*component);
  }
  state.hasHistory = true;
  return out;
}

void ShiftLuma(Plane& luma, int gain, int offset) {
  for (std::uint8_t& sample : luma.samples) {
    sample = ClampToByte(MultiplyLow(SubtractSaturated(sample, offset), gain) >> 6);
  }
}

/// A packed frame of luma and nothing, as wide as whole blocks, so that the noise's rows are the plane's.
void DitherLuma(Plane& luma, const Noise& noise) {
  const std::size_t pitch = NoisePitch(static_cast<std::size_t>(luma.width));
  std::vector<std::uint8_t> frame(pitch * static_cast<std::size_t>(luma.height));
  const auto place = [&](int x, int y) {
    return static_cast<std::size_t>(y) * pitch + 2 * static_cast<std::size_t>(x) + 1;
  };
  for (int y = 0; y < luma.height; ++y) {
    for (int x = 0; x < luma.width; ++x) frame[place(x, y)] = luma.At(x, y);
  }
  Noise laidOut = noise;
  laidOut.width = static_cast<std::size_t>(luma.width);
  laidOut.height = static_cast<std::size_t>(luma.height);
  laidOut.pitch = pitch;
  AddNoise(laidOut, frame.data(), frame.data(), frame.size());
  for (int y = 0; y < luma.height; ++y) {
    for (int x = 0; x < luma.width; ++x) luma.At(x, y) = frame[place(x, y)];
  }
}

}  // namespace reference
