#include "reference/picture.h"

#include <algorithm>
#include <array>

#include "reference/lane.h"

namespace reference {
namespace {

/// Samples k of an axis lie at (2 * step * k + twiceOffset) / 2 in luma samples of the picture.
struct Lattice {
  int step;
  int twiceOffset;
};

/// One axis of one component.
struct Axis {
  Lattice input, output;
  int in, out;        // luma sizes, before any halving
  int componentSize;  // samples of the result
  int halvings;
  bool fromCorner;

  Place At(int k) const {
    const int scaledOut = out << halvings;
    return fromCorner ? CornerPlace(k, scaledOut, in)
                      : CentredPlace(k, scaledOut, in, input.step, input.twiceOffset / 2.0, output.step,
                                     output.twiceOffset / 2.0);
  }
  bool IsIdentity(int inputSize) const {
    if (inputSize != componentSize) return false;
    for (int k = 0; k < componentSize; ++k) {
      const Place place = At(k);
      if (place.source != k || place.phase != 0) return false;
    }
    return true;
  }
};

struct SizedBank {
  int taps;
  int bits;
  Bank phases;
};

/// The rows under a vertical filter around row y.
std::vector<const std::uint8_t*> RowsAround(const Plane& plane, int y, int taps) {
  std::vector<const std::uint8_t*> rows;
  rows.reserve(static_cast<std::size_t>(taps));
  for (int t = 0; t < taps; ++t) rows.push_back(plane.NearestRow(y + t - (taps / 2 - 1)));
  return rows;
}

Row RowOf(const Plane& plane, int y) { return {plane.NearestRow(y), plane.NearestRow(y) + plane.width}; }

Plane FilterColumns(const Plane& in, const Axis& axis, const SizedBank& bank) {
  Plane out(in.width, axis.componentSize);
  for (int y = 0; y < out.height; ++y) {
    const Place at = axis.At(y);
    out.SetRow(y, FilterVertically(RowsAround(in, at.source, bank.taps), bank.phases[at.phase], bank.bits, in.width));
  }
  return out;
}

Plane FilterRows(const Plane& in, const Axis& axis, const SizedBank& bank) {
  Plane out(axis.componentSize, in.height);
  std::vector<Place> places;
  places.reserve(static_cast<std::size_t>(out.width));
  for (int x = 0; x < out.width; ++x) places.push_back(axis.At(x));
  for (int y = 0; y < out.height; ++y) {
    out.SetRow(y, ScaleHorizontally(RowOf(in, y), bank.phases, bank.taps, bank.bits, places, 1));
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

std::uint8_t Plane::Nearest(int x, int y) const { return NearestRow(y)[std::clamp(x, 0, width - 1)]; }

const std::uint8_t* Plane::NearestRow(int y) const {
  return samples.data() + std::ptrdiff_t{std::clamp(y, 0, height - 1)} * width;
}

void Plane::SetRow(int y, const Row& row) { std::copy(row.begin(), row.end(), &At(0, y)); }

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

constexpr int kBorder = 16;

/// A row and what lies beyond its ends: its nearest sample or, by pairs, the samples of its nearest pair.
Row WithBorders(const std::uint8_t* row, int width, bool pairs) {
  Row wide;
  for (int x = -kBorder; x < width + kBorder; ++x) {
    const int before = pairs ? x & 1 : 0, after = pairs ? width - 2 + ((x - width) & 1) : width - 1;
    wide.push_back(row[x < 0 ? before : x < width ? x : after]);
  }
  return wide;
}

Row DenoiseAlongRow(const DenoiseSettings& set, const std::uint8_t* row, const std::uint8_t* previous, int width,
                    bool pairs) {
  const Row before = WithBorders(previous, width, pairs);
  const Row wide = DenoiseHorizontally(WithBorders(row, width, pairs), set.horizontal, set.horizontalTaps, set.edge,
                                       set.motionSmoothing ? before.data() : nullptr, 1);
  return {wide.begin() + kBorder, wide.end() - kBorder};
}

Plane DenoisePlane(const Plane& in, const DenoiseSettings& set, bool pairs, bool hasHistory, Plane& history,
                   Plane& previousInput, Plane& previousVertical) {
  if (!hasHistory) previousInput = in;
  Plane vertical = in;
  for (int y = 0; y < in.height && set.edge > 0; ++y) {
    vertical.SetRow(y, DenoiseVertically(RowsAround(in, y, set.verticalTaps), set.vertical, set.edge,
                                         set.motionSmoothing ? previousInput.NearestRow(y) : nullptr, in.width));
  }
  if (!hasHistory) previousVertical = vertical;
  Plane out = vertical;
  for (int y = 0; y < in.height; ++y) {
    Row row = RowOf(vertical, y);
    if (set.edge > 0) row = DenoiseAlongRow(set, row.data(), previousVertical.NearestRow(y), in.width, pairs);
    if (hasHistory) row = BlendRow(row, history.NearestRow(y), set.temporalStrength, set.temporalShift);
    out.SetRow(y, row);
  }
  previousInput = in;
  previousVertical = vertical;
  history = out;
  return out;
}

}  // namespace

Picture Denoise(const Picture& in, const DenoiseSettings& set, DenoiseState& state) {
  Picture out;
  out.chroma = in.chroma;
  for (Plane Picture::*component : {&Picture::y, &Picture::cb, &Picture::cr}) {
    out.*component =
        DenoisePlane(in.*component, set, set.pairsAtBorders && component == &Picture::y, state.hasHistory,
                     state.history.*component, state.previousInput.*component, state.previousVertical.*component);
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
