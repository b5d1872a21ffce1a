// How a row of one plane is scaled horizontally: the fastest form of the kernel that is exact for its bank and reaches
// its positions, laid out in memory of its own.
#pragma once

#include <cstdint>
#include <vector>

#include "kernels/row_jobs.h"
#include "plan/tap_pairs.h"

namespace vidproc {

struct HorizontalRowRequest {
  const std::int16_t (*bank)[kMaxTaps];  ///< by phase
  std::int32_t taps;                     ///< 4, 8 or 16
  std::int32_t shift;                    ///< of the rounded sums: 6 or 7
  const PhasePosition* positions;        ///< of every output, ascending: the sample under the centre tap, the phase
  std::int32_t outputs;                  ///< samples, or pairs
  std::int32_t inputs;
  std::int32_t step;   ///< bytes from a sample to the next: 1, or 2 for Cb Cr pairs
  ByteRowShape shape;  ///< of the kernels that the plan is for; {}: the general form only
};

class HorizontalRowLayout {
 public:
  /// @throws std::bad_alloc
  explicit HorizontalRowLayout(const HorizontalRowRequest& request);
  HorizontalRowLayout(const HorizontalRowLayout&) = delete;
  HorizontalRowLayout& operator=(const HorizontalRowLayout&) = delete;

  /// Lives as long as the layout, and points into it.
  const HorizontalRowPlan& Plan() const { return plan; }

 private:
  struct GridMemory {
    std::vector<std::int32_t> windows;
    std::vector<std::uint8_t> patterns;
  };

  /// An output component's first tap. Results past the last one repeat it.
  struct FirstTap {
    std::int32_t byte;
    std::int32_t phase;
  };
  FirstTap LocateFirstTap(std::int32_t result) const;
  std::uint32_t UsedPhases() const;
  /// Whether outputs k and k + distance have the same phase, and the same way between them, for all k below `count`.
  bool Repeats(std::int32_t distance, std::int32_t count) const;
  bool ChooseSamePhase(const ByteRowShape& shape);
  /// The bytes that some results take their samples from, of the phases' taps.
  struct Reach {
    std::int32_t first;
    std::int32_t last;
  };
  Reach ReachOf(const VerticalTaps* phases, std::int32_t firstResult, std::int32_t results) const;
  bool StepsByTwo() const;
  bool ChooseWholeWindows(const ByteRowShape& shape);
  bool ChoosePairs(const ByteRowShape& shape);
  bool ChooseOctets(const ByteRowShape& shape);
  bool OctetsAreExact() const;
  template <class LayOutVector>
  bool LayOutGrids(const ByteRowShape& shape, std::int32_t windowsPerVector, std::int32_t patternBytes,
                   const LayOutVector& layOutVector);
  bool LayOutWholeWindows(const ByteRowShape& shape, const VerticalTaps* phases, std::int32_t firstResult,
                          std::int32_t* windows, std::uint8_t* pattern) const;
  bool LayOutWholeResult(const ByteRowShape& shape, const VerticalTaps& taps, std::int32_t centre,
                         std::uint8_t* pattern) const;
  bool LayOutPairs(const ByteRowShape& shape, const TapPairs& pairs, std::int32_t firstResult, std::int32_t* windows,
                   std::uint8_t* pattern) const;
  bool LayOutOctets(const ByteRowShape& shape, std::int32_t firstResult, std::int32_t* windows,
                    std::uint8_t* pattern) const;

  std::vector<PhasePosition> positions;
  std::vector<std::int16_t> bank;
  GridMemory grid;
  GridMemory end;
  HorizontalRowPlan plan{};
};

}  // namespace vidproc
