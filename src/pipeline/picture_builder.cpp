#include "pipeline/picture_builder.h"

#include <algorithm>

#include "pipeline/luma_finish.h"
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
  return settings.denoise.edge > 0 || settings.denoise.temporalStrength > 0;
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

/// Where luma and chroma rows take the same first vertical pass, the packed rows take it in one.
void PictureBuilder::AddPackedSource() {
  const FrameShape& in = settings.input;
  const PackedOrder order = in.format == PixelFormat::kYuyv ? PackedOrder::kLumaFirst : PackedOrder::kChromaFirst;
  sources[0] = &Add<PackedSource>(in.width, in.height, order);
  Stage* packed = sources[0];
  if (!Denoises(settings) && VerticalAxis(true) == VerticalAxis(false)) {
    packed = AddPass(packed, VerticalAxis(true), true, 0);
    hasFirstVerticalPass = true;
  }
  packed->Hold(1);
  const std::int32_t ahead = RowsThatLumaLeads();
  auto& luma = Add<SplitStage>(SplitStage::Part::kLuma, *packed, in.width, order, ahead, kernels);
  auto& pairs = Add<SplitStage>(SplitStage::Part::kPairs, *packed, in.width, order, ahead, kernels);
  luma.Join(pairs);
  pairs.Join(luma);
  rows.luma = &luma;
  rows.pairs = &pairs;
}

/// Two rows of luma are written before the row of chroma between them. Beyond the limit packed rows are split twice.
std::int32_t PictureBuilder::RowsThatLumaLeads() const {
  constexpr std::int32_t kMostRows = 64;
  if (!HalvesChromaRows(settings.output.format)) return 0;
  const AxisRequest axis = VerticalAxis(true);
  const std::int32_t ratio = axis.in / axis.out + 1;
  return std::min(ratio / 2 + (2 << std::min(HalvingsOf(settings.scaling, axis), 8)) + 2, kMostRows);
}

void PictureBuilder::AddDenoising() {
  if (!Denoises(settings)) return;
  const DenoisePlan plan(settings.denoise);
  const bool repeatsPairs = settings.scaling.alignment == Alignment::kCorners;
  int next = 0;
  for (Stage** const component : {&rows.luma, &rows.pairs, &rows.cb, &rows.cr}) {
    if (*component == nullptr) continue;
    const bool isSingle = component != &rows.pairs;
    const std::int32_t borderBytes = !isSingle || (component == &rows.luma && repeatsPairs) ? 2 : 1;
    denoisers[next] = &Add<DenoiseStage>(**component, plan, borderBytes, kernels);
    *component = denoisers[next++];
  }
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

void PictureBuilder::AddScaling() {
  for (Stage** const component : {&rows.luma, &rows.pairs, &rows.cb, &rows.cr}) {
    if (*component != nullptr) *component = ScaleComponent(*component, component == &rows.luma);
  }
}

void PictureBuilder::AddLumaFinish() {
  if (LumaFinish::IsNeeded(settings)) rows.luma = &Add<LumaFinish>(*rows.luma, settings, kernels);
}

}  // namespace vidproc
