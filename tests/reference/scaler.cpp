// Whole-frame form: source rows packed, all vertical results, then every output sample on its own.
#include "reference/scaler.h"

#include <algorithm>
#include <array>
#include <vector>

#include "reference/borders.h"
#include "reference/lane.h"
#include "reference/rows.h"

namespace reference {
namespace {

constexpr int kMaxTaps = 16;

std::vector<std::uint8_t> PackRows(const std::uint8_t* frame, std::size_t stride, int rowBytes, int rows) {
  std::vector<std::uint8_t> packed;
  for (int y = 0; y < rows; ++y) {
    const std::uint8_t* row = frame + static_cast<std::size_t>(y) * stride;
    packed.insert(packed.end(), row, row + rowBytes);
  }
  return packed;
}

void UnpackRows(const std::vector<std::uint8_t>& packed, int rowBytes, std::uint8_t* frame, std::size_t stride) {
  const std::size_t bytes = static_cast<std::size_t>(rowBytes);
  for (std::size_t y = 0; y * bytes < packed.size(); ++y) {
    std::copy_n(packed.data() + y * bytes, bytes, frame + y * stride);
  }
}

class Scaler {
 public:
  Scaler(const ScalerSettings& settings, StreamState& state)
      : set(settings), state(state), inBytes(2 * settings.inWidth), outBytes(2 * settings.outWidth) {}

  std::vector<std::uint8_t> Run(const std::vector<std::uint8_t>& source) {
    if (set.motionGate) {
      const int rows = std::max(set.inHeight, set.outHeight);
      GrowTo(state.previousInput, Size(inBytes, rows));
      GrowTo(state.previousVertical, Size(std::max(inBytes, outBytes), set.outHeight));
      if (state.firstFrame) RememberInput(source);
    }
    FilterVertically(source);
    if (set.motionGate) {
      RememberInput(source);
      if (state.firstFrame) RememberVertical();
    }
    FilterHorizontally();
    if (set.motionGate) RememberVertical();
    if (set.temporal) {
      state.firstFrame = false;
      RememberOutput();
    }
    return output;
  }

 private:
  static std::size_t Size(int a, int b) { return static_cast<std::size_t>(a) * static_cast<std::size_t>(b); }

  void RememberInput(const std::vector<std::uint8_t>& source) {
    std::copy(source.begin(), source.end(), state.previousInput.begin());
  }

  void RememberVertical() {
    std::int16_t* remembered = state.previousVertical.data();
    for (int b = 0; b < inBytes; ++b) {
      for (int r = 0; r < set.outHeight; ++r) *remembered++ = plane[Size(r, inBytes) + static_cast<std::size_t>(b)];
    }
  }

  void RememberOutput() {
    std::uint8_t* remembered = GrowTo(state.history, Size(outBytes, set.outHeight));
    for (int j = 0; j < outBytes; ++j) {
      for (int r = 0; r < set.outHeight; ++r) *remembered++ = output[Size(r, outBytes) + static_cast<std::size_t>(j)];
    }
  }

  /// True where the centre sample differs from the remembered one. The square is compared as a signed 16-bit number:
  /// large changes wrap and pass for rest.
  static bool Moves(int remembered, int centre) {
    const int difference = Wrap16(remembered - centre);
    return Wrap16(difference * difference) >= 256;
  }

  /// Taps take weight from the bank, less for samples unlike the centre; the centre tap takes up the rest.
  void WeighTaps(const std::int16_t* bank, const int* samples, int taps, bool moving, int* weights) const {
    if (!set.adaptiveTaps) {
      std::copy_n(bank, taps, weights);
      return;
    }
    const int shift = set.adaptive == 0 ? 255 : set.adaptive - 1;
    const int centre = taps / 2 - 1;
    int others = 0;
    for (int t = 0; t < taps; ++t) {
      if (t == centre) continue;
      const int square = moving ? 0 : CappedSquare(SubtractSaturated(samples[t], samples[centre]));
      weights[t] = Wrap16(DifferenceWeight(square, shift) * bank[t] + 128) >> 8;
      others += weights[t];
    }
    weights[centre] = Wrap16(128 - others);
  }

  /// Rounded sum of the products. `twoSums` adds taps 0-3 (and 8-11) apart from taps 4-7 (and 12-15).
  int Filter(const std::int16_t* bank, const int* samples, int taps, bool moving, bool twoSums) const {
    int weights[kMaxTaps];
    WeighTaps(bank, samples, taps, moving, weights);
    int sums[2] = {0, 0};
    for (int t = 0; t < taps; ++t) {
      int& sum = sums[twoSums && (t & 4) != 0];
      sum = AddSaturated(sum, MultiplyLow(weights[t], samples[t]));
    }
    return AddSaturated(AddSaturated(sums[0], sums[1]), 1 << (set.precisionBits - 1)) >> set.precisionBits;
  }

  void FilterVertically(const std::vector<std::uint8_t>& source) {
    plane.resize(Size(inBytes, set.outHeight));
    std::int16_t* result = plane.data();
    const int centre = set.verticalTaps / 2 - 1;
    for (int r = 0; r < set.outHeight; ++r) {
      const Place at = CornerPlace(r, set.verticalUp, set.verticalDown);
      const std::uint8_t* rows[kMaxTaps];
      for (int t = 0; t < set.verticalTaps; ++t) {
        const int row = std::clamp(at.source - centre + t, 0, set.inHeight - 1);
        rows[t] = source.data() + Size(row, inBytes);
      }
      for (int b = 0; b < inBytes; ++b) {
        int samples[kMaxTaps];
        for (int t = 0; t < set.verticalTaps; ++t) samples[t] = rows[t][b];
        const bool moving = set.motionGate &&
                            Moves(state.previousInput[Size(r, inBytes) + static_cast<std::size_t>(b)], rows[centre][b]);
        const int value = Filter(set.vertical[at.phase], samples, set.verticalTaps, moving, false);
        *result++ = static_cast<std::int16_t>(value);
      }
    }
  }

  /// Where one output column of bytes comes from.
  struct Column {
    int phase;
    int taps[kMaxTaps];  // source columns
  };

  std::vector<Column> PlanColumns() const {
    std::vector<Column> plan(static_cast<std::size_t>(outBytes));
    for (const auto& [first, step] : {std::array{0, 4}, std::array{1, 2}, std::array{2, 4}}) {  // Cb, Y, Cr
      for (int k = 0; k * step + first < outBytes; ++k) {
        const Place at = CornerPlace(k, set.horizontalUp, set.horizontalDown);
        Column& column = plan.data()[k * step + first];
        column.phase = at.phase;
        for (int t = 0; t < set.horizontalTaps; ++t) {
          column.taps[t] = FoldColumn(first + step * (at.source - (set.horizontalTaps / 2 - 1) + t), inBytes);
        }
      }
    }
    return plan;
  }

  void FilterHorizontally() {
    output.resize(Size(outBytes, set.outHeight));
    if (set.temporal) GrowTo(state.history, output.size());
    const std::vector<Column> plan = PlanColumns();
    std::uint8_t* result = output.data();
    for (int r = 0; r < set.outHeight; ++r) {
      const std::int16_t* row = plane.data() + Size(r, inBytes);
      for (int j = 0; j < outBytes; ++j) {
        const Column& column = plan.data()[j];
        int samples[kMaxTaps];
        for (int t = 0; t < set.horizontalTaps; ++t) samples[t] = row[column.taps[t]];
        const std::size_t transposed = Size(j, set.outHeight) + static_cast<std::size_t>(r);
        const int centre = samples[set.horizontalTaps / 2 - 1];
        const bool moving = set.motionGate && Moves(state.previousVertical[transposed], centre);
        const int value = Filter(set.horizontal[column.phase], samples, set.horizontalTaps, moving, true);
        *result++ = Finish(value, transposed, j % 2 == 1);
      }
    }
  }

  std::uint8_t Finish(int value, std::size_t transposed, bool luma) const {
    if (set.shiftLuma && luma) {
      return ClampToByte(MultiplyLow(SubtractSaturated(value, set.lumaOffset), set.lumaGain) >> 6);
    }
    if (!set.temporal || state.firstFrame) return ClampToByte(value);
    const int history = state.history[transposed];
    const int square = CappedSquare(SubtractSaturated(history, value));
    return Blend(value, history, HistoryWeight(square, set.temporalShift, set.temporalStrength));
  }

  const ScalerSettings& set;
  StreamState& state;
  const int inBytes;
  const int outBytes;
  std::vector<std::int16_t> plane;   // vertical result, outHeight rows of inBytes values
  std::vector<std::uint8_t> output;  // packed rows
};

}  // namespace

void RunScaler(const ScalerSettings& settings, const Noise& noise, StreamState& state, const std::uint8_t* source,
               std::uint8_t* destination) {
  const auto packed = PackRows(source, settings.inStride, 2 * settings.inWidth, settings.inHeight);
  std::vector<std::uint8_t> output = Scaler(settings, state).Run(packed);
  AddNoise(noise, output.data(), output.data(), output.size());
  UnpackRows(output, 2 * settings.outWidth, destination, settings.outStride);
}

void RunPassThrough(const ScalerSettings& settings, const Noise& noise, const std::uint8_t* source,
                    std::uint8_t* destination) {
  const int rowBytes = 2 * settings.outWidth;
  UnpackRows(PackRows(source, settings.inStride, rowBytes, settings.outHeight), rowBytes, destination,
             settings.outStride);
  const std::size_t limit =
      static_cast<std::size_t>(settings.outHeight - 1) * settings.outStride + static_cast<std::size_t>(rowBytes);
  AddNoise(noise, destination, destination, limit);
}

}  // namespace reference
