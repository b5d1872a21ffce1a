// Denoising of a component at its own size: edge-preserving taps, vertically, then horizontally; then a blend with what
// came out for the frame before. What is kept of that frame lies in row order and is replaced row by row.
#pragma once

#include <algorithm>
#include <iterator>

#include "kernels/kernel_table.h"
#include "kernels/row_jobs.h"
#include "pipeline/pipeline.h"
#include "pipeline/stage.h"

namespace vidproc {

/// What denoising does, to every component alike.
struct DenoisePlan {
  explicit DenoisePlan(const DenoiseSettings& settings);

  std::int32_t verticalTaps;
  bool filters;
  bool blends;
  bool smoothsMotion;
  DenoiseTaps vertical{};
  DenoiseTaps horizontal{};
  HistoryBlend blend{};
};

/// What may be kept of a frame for the next.
enum class Kept { kOutput, kInput, kVerticalResult };
inline constexpr Kept kAllKept[] = {Kept::kOutput, Kept::kInput, Kept::kVerticalResult};

class DenoiseStage : public Stage {
 public:
  /// @param borderBytes  what repeats beyond a row's ends: a sample, or a pair
  /// @throws std::bad_alloc
  DenoiseStage(Stage& input, const DenoisePlan& plan, std::int32_t borderBytes, const KernelTable& kernels);

  void Hold(std::int32_t rows) override;
  void WriteRow(std::int32_t y, std::uint8_t* out) override;
  void StartFrame() override;
  void EndFrame() override;

  bool Keeps(Kept what) const { return what == Kept::kOutput ? plan.blends : plan.smoothsMotion; }
  RowStore& KeptRows(Kept what);
  /// Whether the kept rows are those of a frame before.
  bool& IsCurrent(Kept what) { return isCurrent[static_cast<int>(what)]; }
  /// The next frame is the first one.
  void ForgetKept() { std::fill(std::begin(isCurrent), std::end(isCurrent), false); }

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;

 private:
  bool KeepsAnything() const { return plan.blends || plan.smoothsMotion; }
  void MakeRowsBefore(std::int32_t y);
  void Denoise(std::int32_t y, std::uint8_t* history, std::uint8_t* out);
  const std::uint8_t* FilterVertically(std::int32_t y);
  /// The row kept of the frame before; of the first one, its own row.
  std::uint8_t* PreviousRow(Kept what, std::int32_t y, const std::uint8_t* current);

  Stage& input;
  const DenoisePlan plan;
  const std::int32_t borderBytes;
  const KernelTable& kernels;
  RowStore verticalResult;  ///< one row
  RowStore previousInput;
  RowStore previousVertical;
  bool isCurrent[3] = {};
  std::int32_t nextRow = 0;
};

}  // namespace vidproc
