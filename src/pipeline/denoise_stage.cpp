#include "pipeline/denoise_stage.h"

#include <algorithm>
#include <cstring>

#include "filters/resampling_bank.h"
#include "plan/row_taps.h"

namespace vidproc {
namespace {

constexpr int kBits = 7;

DenoiseTaps TapsOf(const DenoiseSettings& settings, int taps) {
  filters::Bank bank{};
  const auto softening = static_cast<std::uint32_t>(settings.softening);
  filters::DesignResamplingBank({filters::kGaussian, softening, 0}, taps, kBits, bank);
  return PlanDenoiseTaps(bank[0], taps, settings.edge);
}

template <class Condition>
bool AnyOf(const DenoisePlans& plans, const Condition& condition) {
  return std::any_of(plans.begin(), plans.end(), condition);
}

bool IsIdle(const DenoisePlan& plan) { return !plan.filters && !plan.keepsHistory; }

/// Rows of the input that plans work on at a time.
std::int32_t RowsFor(const DenoisePlans& plans) {
  std::int32_t rows = 1;
  for (const DenoisePlan& plan : plans) rows = std::max(rows, plan.filters ? plan.verticalTaps : 1);
  return rows;
}

}  // namespace

DenoisePlan::DenoisePlan(const DenoiseSettings& settings, std::int32_t pass)
    : verticalTaps(settings.taps / 2),
      filters(settings.edge > 0 && pass < settings.passes),
      keepsHistory(pass == 0 && (settings.temporalStrength > 0 || settings.automatic > 0)),
      blends(pass == 0 && settings.temporalStrength > 0),
      smoothsMotion(pass == 0 && settings.smoothsMotion && filters) {
  if (filters) {
    vertical = TapsOf(settings, verticalTaps);
    horizontal = TapsOf(settings, settings.taps);
  }
  if (blends) blend = PlanHistoryBlend(settings.temporalStrength, settings.temporalShift);
}

std::vector<DenoisePlans> PlanDenoising(const std::vector<DenoiseSettings>& ladder) {
  std::vector<DenoisePlans> passes;
  const auto needs = [&](std::int32_t pass) {
    return pass == 0 || std::any_of(ladder.begin(), ladder.end(),
                                    [=](const DenoiseSettings& s) { return s.edge > 0 && pass < s.passes; });
  };
  for (std::int32_t pass = 0; needs(pass); ++pass) {
    passes.emplace_back();
    for (const DenoiseSettings& settings : ladder) passes.back().emplace_back(settings, pass);
  }
  return passes;
}

DenoiseStage::DenoiseStage(Stage& input, const DenoisePlans& plans, std::int32_t borderBytes,
                           const KernelTable& kernels)
    : Stage(input.Shape()),
      input(input),
      plans(plans),
      plan(plans.data()),
      borderBytes(borderBytes),
      kernels(kernels),
      verticalResult(Shape().RowBytes(), 1) {
  if (AnyOf(plans, [](const DenoisePlan& p) { return p.smoothsMotion; })) {
    previousInput = RowStore(Shape().RowBytes(), Shape().height);
    previousVertical = RowStore(Shape().RowBytes(), Shape().height);
  }
  input.Hold(RowsFor(plans));
}

/// Where plans have nothing to do, readers get the rows of the input.
void DenoiseStage::Hold(std::int32_t rows) {
  Stage::Hold(plan->keepsHistory ? Shape().height : rows);
  if (AnyOf(plans, IsIdle)) input.Hold(std::max(rows, RowsFor(plans)));
}

void DenoiseStage::UsePlan(std::size_t step) {
  plan = &plans[step];
  PassOn(IsIdle(*plan) ? &input : nullptr);
}

RowStore& DenoiseStage::KeptRows(Kept what) {
  if (what == Kept::kOutput) return HeldRows();
  return what == Kept::kInput ? previousInput : previousVertical;
}

void DenoiseStage::StartFrame() {
  Stage::StartFrame();
  nextRow = 0;
}

/// Rows that nobody has asked for still become those of the frame before.
void DenoiseStage::EndFrame() {
  if (KeepsAnything()) MakeRowsBefore(Shape().height);
  for (const Kept what : kAllKept) HasKept(what) = Keeps(what);
}

void DenoiseStage::MakeRowsBefore(std::int32_t y) {
  while (nextRow < y) HeldRow(nextRow);
}

void DenoiseStage::MakeRow(std::int32_t y, std::uint8_t* out) {
  if (KeepsAnything()) MakeRowsBefore(y);
  Denoise(y, plan->keepsHistory ? out : nullptr, plan->keepsHistory ? nullptr : out);
}

void DenoiseStage::WriteRow(std::int32_t y, std::uint8_t* out) {
  if (IsIdle(*plan)) return input.WriteRow(y, out);
  if (!plan->keepsHistory) return MakeRow(y, out);
  MakeRowsBefore(y);
  if (!Holds(y)) return Denoise(y, PlaceFor(y), out);
  std::memcpy(out, HeldRows().Row(y), static_cast<std::size_t>(Shape().RowBytes()));
}

std::uint8_t* DenoiseStage::PreviousRow(Kept what, std::int32_t y, const std::uint8_t* current) {
  if (!plan->smoothsMotion) return nullptr;
  std::uint8_t* const row = KeptRows(what).Row(y);
  if (!HasKept(what)) std::memcpy(row, current, static_cast<std::size_t>(Shape().RowBytes()));
  return row;
}

const std::uint8_t* DenoiseStage::FilterVertically(std::int32_t y) {
  const std::int32_t lastRow = Shape().height - 1;
  VerticalDenoiseJob job{};
  job.taps = &plan->vertical;
  for (std::int32_t t = 0; t < plan->vertical.count; ++t) {
    job.rows[t] = input.Row(std::clamp(y + plan->vertical.offset[t], 0, lastRow));
  }
  job.centre = input.Row(y);
  if (input.GivesRows()) job.ahead[0] = input.GivenRow(std::min(y + plan->verticalTaps / 2 + 1, lastRow));
  job.previous = PreviousRow(Kept::kInput, y, job.centre);
  job.bytes = Shape().RowBytes();
  job.out = verticalResult.Row(0);
  kernels.denoiseRowVertically(job);
  kernels.repeatEdges(job.out, job.bytes, borderBytes);
  return job.out;
}

void DenoiseStage::Denoise(std::int32_t y, std::uint8_t* history, std::uint8_t* out) {
  HorizontalDenoiseJob job{};
  job.taps = &plan->horizontal;
  job.in = plan->filters ? FilterVertically(y) : input.HeldRow(y);
  job.previous = PreviousRow(Kept::kVerticalResult, y, job.in);
  job.blend = plan->blends && HasKept(Kept::kOutput) ? &plan->blend : nullptr;
  job.history = history;
  job.step = Shape().sampleBytes;
  job.bytes = Shape().RowBytes();
  job.out = out;
  kernels.denoiseRowHorizontally(job);
  nextRow = y + 1;
}

}  // namespace vidproc
