#include "pipeline/picture_builder.h"

#include <algorithm>

#include "pipeline/deblock_step.h"
#include "pipeline/denoise_ladder.h"
#include "pipeline/luma_finish.h"
#include "pipeline/processor_step.h"
#include "pipeline/scaling_stages.h"

namespace vidproc {
namespace {

SampleGrid ChromaColumnGrid(const FrameShape& shape) {
  return shape.siting == ChromaSiting::kLeft ? kLeftChromaGrid : kCentredChromaGrid;
}

SampleGrid ChromaRowGrid(const FrameShape& shape) {
  return HalvesChromaRows(shape.format) ? kCentredChromaGrid : kLumaGrid;
}

bool Denoises(const PipelineSettings& settings) {
  return settings.denoise.edge > 0 || settings.denoise.temporalStrength > 0 || settings.denoise.automatic > 0;
}

}  // namespace

PictureBuilder::PictureBuilder(const PipelineSettings& settings, const KernelTable& kernels)
    : settings(settings), kernels(kernels) {}

AxisRequest PictureBuilder::HorizontalAxis(bool isLuma) const {
  const FrameShape& in = settings.input;
  const FrameShape& out = settings.output;
  AxisRequest axis{in.width, out.width, in.width, out.width, kLumaGrid, kLumaGrid, false, false, settings.scaling.taps};
  if (isLuma) return axis;
  axis.componentIn = ChromaColumns(in);
  axis.componentOut = ChromaColumns(out);
  axis.gridIn = ChromaColumnGrid(in);
  axis.gridOut = ChromaColumnGrid(out);
  return axis;
}

AxisRequest PictureBuilder::VerticalAxis(bool isLuma) const {
  const FrameShape& in = settings.input;
  const FrameShape& out = settings.output;
  AxisRequest axis{
      in.height, out.height, in.height, out.height, kLumaGrid, kLumaGrid, false, false, settings.scaling.taps / 2};
  if (isLuma) return axis;
  const bool corners = settings.scaling.alignment == Alignment::kCorners;
  axis.componentIn = ChromaRows(in);
  axis.componentOut = ChromaRows(out);
  axis.gridIn = ChromaRowGrid(in);
  axis.gridOut = ChromaRowGrid(out);
  axis.repeatsIn = corners && HalvesChromaRows(in.format);
  axis.dropsOut = corners && HalvesChromaRows(out.format);
  return axis;
}

void PictureBuilder::AddSources() {
  const FrameShape& in = settings.input;
  if (IsPacked(in.format)) return AddPackedSource();
  sources[0] = &Add<PlaneSource>(PlaneShape{in.width, in.height, 1});
  rows.luma = sources[0];
  const PlaneShape chroma{ChromaColumns(in), ChromaRows(in), HasChromaPlanes(in.format) ? 1 : 2};
  sources[1] = &Add<PlaneSource>(chroma);
  if (!HasChromaPlanes(in.format)) {
    rows.pairs = sources[1];
    return;
  }
  sources[2] = &Add<PlaneSource>(chroma);
  rows.cb = sources[1];
  rows.cr = sources[2];
}

/// Where luma and chroma rows take the same first vertical pass, and nothing comes before it, packed rows take it
/// whole.
void PictureBuilder::AddPackedSource() {
  const FrameShape& in = settings.input;
  const PackedOrder order = in.format == PixelFormat::kYuyv ? PackedOrder::kLumaFirst : PackedOrder::kChromaFirst;
  sources[0] = &Add<PackedSource>(in.width, in.height, order);
  Stage* packed = sources[0];
  const bool scalesFirst = !Denoises(settings) && settings.deblockLevel == 0 && !ProcessorStep::Serves(settings);
  const bool startsVertically =
      HalvingsOf(settings.scaling, HorizontalAxis(true)) == 0 || HalvingsOf(settings.scaling, VerticalAxis(true)) > 0;
  if (scalesFirst && startsVertically && VerticalAxis(true) == VerticalAxis(false)) {
    packed = AddPass(packed, VerticalAxis(true), true, 0);
    hasFirstVerticalPass = true;
  }
  Split(*packed, in.width, order);
}

void PictureBuilder::Split(Stage& packed, std::int32_t width, PackedOrder order) {
  packed.Hold(1);
  const std::int32_t lead = RowsThatLumaLeads();
  const PlaneShape lumaShape{width, packed.Shape().height, 1};
  const PlaneShape pairShape{packed.Shape().width, packed.Shape().height, 2};
  auto& luma = Add<SplitStage>(SplitStage::Part::kLuma, lumaShape, packed, order, lead, kernels);
  auto& pairs = Add<SplitStage>(SplitStage::Part::kPairs, pairShape, packed, order, lead, kernels);
  luma.Join(pairs);
  pairs.Join(luma);
  rows = {.luma = &luma, .pairs = &pairs};
}

void PictureBuilder::SplitApart(Stage& packed, std::int32_t width, std::int32_t chromaRows) {
  Split(packed, width, PackedOrder::kChromaFirst);
  Stage* const luma = rows.luma;
  // Each split also makes rows of a part that nobody reads: one held row takes them.
  rows.pairs->Hold(1);
  Split(packed, width, PackedOrder::kChromaFirst);
  rows.luma->Hold(1);
  PickChromaRows(chromaRows, [](std::int32_t y) { return y; });
  rows.luma = luma;
}

/// Two rows of luma are written before the row of chroma between them. Beyond the limit packed rows are split twice.
std::int32_t PictureBuilder::RowsThatLumaLeads() const {
  constexpr std::int32_t kMostRows = 64;
  if (!HalvesChromaRows(settings.output.format)) return 0;
  const AxisRequest axis = VerticalAxis(false);
  const std::int32_t ratio = axis.in / axis.out + 1;
  return std::min(ratio / 2 + (2 << std::min(HalvingsOf(settings.scaling, axis), 8)) + 2, kMostRows);
}

/// Chroma as `count` rows, copies of row rowOf(y) each.
template <class RowOf>
void PictureBuilder::PickChromaRows(std::int32_t count, const RowOf& rowOf) {
  std::vector<PhasePosition> positions(static_cast<std::size_t>(count));
  for (std::int32_t y = 0; y < count; ++y) positions[static_cast<std::size_t>(y)] = {rowOf(y), 0};
  const AxisPass pass = PickSamples(std::move(positions));
  for (Stage** const component : {&rows.pairs, &rows.cb, &rows.cr}) {
    if (*component != nullptr) *component = &Add<VerticalPass>(**component, pass, kernels);
  }
}

void PictureBuilder::AddDeblocking() {
  if (settings.deblockLevel == 0) return;
  const FrameShape& in = settings.input;
  const std::int32_t chromaRows = ChromaRows(in);
  const bool halved = HalvesChromaRows(in.format);
  if (halved) PickChromaRows(in.height, [=](std::int32_t y) { return std::min(y, chromaRows - 1); });
  wholeFrameSteps.push_back(std::make_unique<DeblockStep>(settings.deblockLevel, rows, kernels));
  auto& packed = Add<PackedSource>(2 * ChromaColumns(in), in.height, PackedOrder::kChromaFirst);
  wholeFrameSteps.back()->output = &packed;
  if (halved) return SplitApart(packed, in.width, chromaRows);
  Split(packed, in.width, PackedOrder::kChromaFirst);
}

void PictureBuilder::AddDenoising() {
  if (!Denoises(settings)) return;
  denoisePlans = PlanDenoising(DenoiseLadder(settings.denoise));
  for (const DenoisePlans& plans : denoisePlans) AddDenoisingPass(plans);
}

void PictureBuilder::AddDenoisingPass(const DenoisePlans& plans) {
  const bool repeatsPairs = settings.scaling.alignment == Alignment::kCorners;
  const bool isFirst = &plans == &denoisePlans.front();
  int next = 0;
  for (Stage** const component : {&rows.luma, &rows.pairs, &rows.cb, &rows.cr}) {
    if (*component == nullptr) continue;
    const bool isSingle = component != &rows.pairs;
    const std::int32_t borderBytes = !isSingle || (component == &rows.luma && repeatsPairs) ? 2 : 1;
    denoiseStages.push_back(&Add<DenoiseStage>(**component, plans, borderBytes, kernels));
    *component = denoiseStages.back();
    if (isFirst) denoisers[next++] = denoiseStages.back();
  }
}

void PictureBuilder::UseDenoiseStep(std::size_t step) {
  for (DenoiseStage* const stage : denoiseStages) stage->UsePlan(step);
}

Stage* PictureBuilder::AddPass(Stage* input, const AxisRequest& axis, bool isVertical, std::int32_t number) {
  AxisPass pass;
  if (!PlanAxisPass(settings.scaling, settings.role, axis, number, pass)) return input;
  if (isVertical) return &Add<VerticalPass>(*input, pass, kernels);
  return &Add<HorizontalPass>(*input, pass, kernels);
}

/// Halvings take turns with each other, and the last step of each axis comes last.
Stage* PictureBuilder::ScaleComponent(Stage* input, bool isLuma) {
  const AxisRequest vertical = VerticalAxis(isLuma);
  const AxisRequest horizontal = HorizontalAxis(isLuma);
  const std::int32_t verticalHalvings = HalvingsOf(settings.scaling, vertical);
  const std::int32_t horizontalHalvings = HalvingsOf(settings.scaling, horizontal);
  const auto addVertical = [&](std::int32_t number) {
    if (number > 0 || !hasFirstVerticalPass) input = AddPass(input, vertical, true, number);
  };
  for (std::int32_t h = 0; h < std::max(verticalHalvings, horizontalHalvings); ++h) {
    if (h < verticalHalvings) addVertical(h);
    if (h < horizontalHalvings) input = AddPass(input, horizontal, false, h);
  }
  addVertical(verticalHalvings);
  return AddPass(input, horizontal, false, horizontalHalvings);
}

bool PictureBuilder::NeedsPass(bool isLuma) const {
  AxisPass pass;
  return PlanAxisPass(settings.scaling, settings.role, VerticalAxis(isLuma), 0, pass) ||
         PlanAxisPass(settings.scaling, settings.role, HorizontalAxis(isLuma), 0, pass);
}

bool PictureBuilder::ChangesNothing() const {
  return settings.input == settings.output && !Denoises(settings) && settings.deblockLevel == 0 &&
         !LumaFinish::IsNeeded(settings) && !NeedsPass(true) && !NeedsPass(false);
}

/// Chroma rows of 4:2:0 stand twice in the processor's frame; of every two that come out the second is taken.
void PictureBuilder::ScaleByProcessor() {
  const FrameShape& out = settings.output;
  if (HalvesChromaRows(settings.input.format)) {
    PickChromaRows(settings.input.height, [](std::int32_t y) { return y / 2; });
  }
  wholeFrameSteps.push_back(std::make_unique<ProcessorStep>(settings, rows, kernels));
  auto& packed = Add<PackedSource>(out.width, out.height, PackedOrder::kChromaFirst);
  wholeFrameSteps.back()->output = &packed;
  Split(packed, out.width, PackedOrder::kChromaFirst);
  if (!HalvesChromaRows(out.format)) return;
  PickChromaRows(ChromaRows(out), [=](std::int32_t y) { return std::min(2 * y + 1, out.height - 1); });
}

void PictureBuilder::AddScaling() {
  if (ProcessorStep::Serves(settings) && NeedsPass(true)) return ScaleByProcessor();
  for (Stage** const component : {&rows.luma, &rows.pairs, &rows.cb, &rows.cr}) {
    if (*component != nullptr) *component = ScaleComponent(*component, component == &rows.luma);
  }
}

void PictureBuilder::AddLumaFinish() {
  if (LumaFinish::IsNeeded(settings)) rows.luma = &Add<LumaFinish>(*rows.luma, settings, kernels);
}

}  // namespace vidproc
