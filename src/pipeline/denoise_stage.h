// Denoising of a component at its own size: edge-preserving taps, vertically, then horizontally; then a blend with what
// came out for the frame before. What is kept of that frame lies in row order and is replaced row by row.
#pragma once

#include <algorithm>
#include <iterator>
#include <vector>

#include "kernels/kernel_table.h"
#include "kernels/row_jobs.h"
#include "pipeline/pipeline.h"
#include "pipeline/stage.h"

namespace vidproc {

/// What a pass of denoising does, to every component alike.
struct DenoisePlan {
  /// @param pass  0 the one with the history, 1.. those that average neighbours again, or do nothing
  DenoisePlan(const DenoiseSettings& settings, std::int32_t pass);

  std::int32_t verticalTaps;
  bool filters;
  bool keepsHistory;  ///< whether or not it blends: a step of the ladder that does may follow
  bool blends;
  bool smoothsMotion;
  DenoiseTaps vertical{};
  DenoiseTaps horizontal{};
  HistoryBlend blend{};
};

/// A pass's plans for every step of a ladder of settings.
using DenoisePlans = std::vector<DenoisePlan>;

/// As many passes as one of the steps needs. @throws std::bad_alloc
std::vector<DenoisePlans> PlanDenoising(const std::vector<DenoiseSettings>& ladder);

/// What may be kept of a frame for the next.
enum class Kept { kOutput, kInput, kVerticalResult };
inline constexpr Kept kAllKept[] = {Kept::kOutput, Kept::kInput, Kept::kVerticalResult};

class DenoiseStage : public Stage {
 public:
  /// Begins with the first of the plans. All of them keep a history, or none.
  /// @param borderBytes  what repeats beyond a row's ends: a sample, or a pair
  /// @throws std::bad_alloc
  DenoiseStage(Stage& input, const DenoisePlans& plans, std::int32_t borderBytes, const KernelTable& kernels);

  void Hold(std::int32_t rows) override;
  void WriteRow(std::int32_t y, std::uint8_t* out) override;
  void StartFrame() override;
  void EndFrame() override;

  /// Chooses the plan of the frames to come.
  void UsePlan(std::size_t step);

  bool Keeps(Kept what) const { return what == Kept::kOutput ? plan->keepsHistory : plan->smoothsMotion; }
  RowStore& KeptRows(Kept what);
  /// Whether there are kept rows: those of a frame before.
  bool& HasKept(Kept what) { return hasKept[static_cast<int>(what)]; }
  /// The next frame is the first one.
  void ForgetKept() { std::fill(std::begin(hasKept), std::end(hasKept), false); }

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;

 private:
  bool KeepsAnything() const { return plan->keepsHistory || plan->smoothsMotion; }
  void MakeRowsBefore(std::int32_t y);
  void Denoise(std::int32_t y, std::uint8_t* history, std::uint8_t* out);
  const std::uint8_t* FilterVertically(std::int32_t y);
  /// The row kept of the frame before; of the first one, its own row.
  std::uint8_t* PreviousRow(Kept what, std::int32_t y, const std::uint8_t* current);

  Stage& input;
  const DenoisePlans& plans;
  const DenoisePlan* plan;
  const std::int32_t borderBytes;
  const KernelTable& kernels;
  RowStore verticalResult;  ///< one row
  RowStore previousInput;
  RowStore previousVertical;
  bool hasKept[3] = {};
  std::int32_t nextRow = 0;
};

}  // namespace vidproc
