#include "pipeline/axis_pass.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "filters/scaling_bank.h"
#include "kernels/kernel_traits.h"

namespace vidproc {
namespace {

constexpr std::int32_t kInterfaceBits = 7;
constexpr std::int32_t kFixedWidthPostBits = kPostTraits.precisionBits;
constexpr std::int32_t kFewestTaps = 4;

filters::ScalingKernel KernelOf(ScalingFilter filter) {
  switch (filter) {
    case ScalingFilter::kAutomatic:
      return filters::ScalingKernel::kAutomatic;
    case ScalingFilter::kBilinear:
      return filters::ScalingKernel::kBilinear;
    case ScalingFilter::kCatmullRom:
      return filters::ScalingKernel::kCatmullRom;
    case ScalingFilter::kMitchell:
      return filters::ScalingKernel::kMitchell;
    case ScalingFilter::kLanczos:
      return filters::ScalingKernel::kLanczos;
    case ScalingFilter::kArea:
      return filters::ScalingKernel::kArea;
    default:
      return filters::ScalingKernel::kFixedWidth;
  }
}

filters::ScalingDesign FilterOf(const ScalingSettings& settings, bool keepsPlaces) {
  filters::ScalingDesign filter;
  filter.kernel = KernelOf(settings.filter);
  if (filter.kernel == filters::ScalingKernel::kFixedWidth) {
    filter.fixedWidth = {KindOf(settings.filter), static_cast<std::uint32_t>(settings.softening),
                         static_cast<std::uint32_t>(settings.lobes)};
  } else if (keepsPlaces) {
    filter.kernel = filters::ScalingKernel::kIdentity;
  }
  filter.sharpening = static_cast<std::uint32_t>(settings.sharpening);
  return filter;
}

std::int32_t Halved(std::int32_t size, std::int32_t times) {
  for (; times > 0; --times) size = size / 2 + size % 2;
  return size;
}

Ratio Reduced(std::int32_t up, std::int32_t down) {
  const std::int32_t divisor = std::gcd(up, down);
  return {up / divisor, down / divisor};
}

PositionRule RuleOf(const ScalingSettings& settings, const Ratio& ratio, const SampleGrid& gridIn,
                    const SampleGrid& gridOut) {
  return settings.alignment == Alignment::kCentres ? AlignCentres(ratio, gridIn, gridOut) : AlignCorners(ratio);
}

/// Output samples to input samples of the component: another ratio than luma's where its sampling changes.
Ratio OwnRatio(const ScalingSettings& settings, const AxisRequest& axis) {
  if (settings.alignment == Alignment::kCorners) return Reduced(axis.out, axis.in);
  return Reduced(axis.out * axis.gridIn.spacing, axis.in * axis.gridOut.spacing);
}

bool IsUnity(const AxisPass& pass) {
  const std::int16_t* const taps = pass.bank[0];
  return taps[filters::CentreTap(pass.taps)] == 1 << pass.precisionBits &&
         std::count(taps, taps + pass.taps, 0) == pass.taps - 1;
}

void PlanHalving(const ScalingSettings& settings, const AxisRequest& axis, std::int32_t size, AxisPass& pass) {
  constexpr Ratio kHalf{1, 2};
  const PositionRule rule = RuleOf(settings, kHalf, axis.gridIn, axis.gridIn);
  for (std::int32_t k = 0; k < Halved(size, 1); ++k) pass.positions.push_back(rule.Locate(k));
  pass.precisionBits = kInterfaceBits;
  filters::DesignScalingBank({}, kHalf.up, kHalf.down, axis.taps, pass.precisionBits, pass.bank);
}

/// @return whether all outputs lie on the samples of the same number, of `size`.
bool PlanLastStep(const ScalingSettings& settings, const AxisRequest& axis, std::int32_t size, std::int32_t halvings,
                  AxisPass& pass) {
  const PositionRule rule = RuleOf(settings, Reduced(axis.out << halvings, axis.in), axis.gridIn, axis.gridOut);
  bool keepsPlaces = size == (axis.dropsOut ? axis.out : axis.componentOut);
  for (std::int32_t k = 0; k < axis.componentOut; ++k) {
    const std::int32_t row = axis.dropsOut ? std::min(2 * k + 1, axis.out - 1) : k;
    const PhasePosition position = rule.Locate(row);
    keepsPlaces = keepsPlaces && position.source == row && position.phase == 0;
    pass.positions.push_back(position);
  }
  const filters::ScalingDesign filter = FilterOf(settings, keepsPlaces);
  const Ratio own = OwnRatio(settings, axis);
  filters::DesignScalingBank(filter, own.up << halvings, own.down, axis.taps, pass.precisionBits, pass.bank);
  return keepsPlaces;
}

}  // namespace

filters::KernelKind KindOf(ScalingFilter filter) {
  if (filter == ScalingFilter::kGaussian) return filters::kGaussian;
  return filter == ScalingFilter::kHammingSinc ? filters::kHammingSinc : filters::kTwoSincs;
}

AxisPass PickSamples(std::vector<PhasePosition> positions) {
  AxisPass pass{std::move(positions), {}, kFewestTaps, kInterfaceBits, 0};
  filters::DesignScalingBank({.kernel = filters::ScalingKernel::kIdentity}, 1, 1, pass.taps, kInterfaceBits, pass.bank);
  return pass;
}

std::int32_t HalvingsOf(const ScalingSettings& settings, const AxisRequest& axis) {
  if (HasFixedWidth(settings.filter)) return 0;
  std::int32_t halvings = 0;
  const Ratio own = OwnRatio(settings, axis);
  while (own.down > std::int64_t{own.up} * (axis.taps / 2) << halvings) ++halvings;
  return halvings;
}

bool PlanAxisPass(const ScalingSettings& settings, Role role, const AxisRequest& axis, std::int32_t number,
                  AxisPass& pass) {
  const std::int32_t halvings = HalvingsOf(settings, axis);
  const std::int32_t size = Halved(axis.repeatsIn ? axis.in : axis.componentIn, number);
  pass.positions.clear();
  pass.taps = axis.taps;
  pass.repeatedSize = axis.repeatsIn && number == 0 ? axis.in : 0;
  if (number < halvings) {
    PlanHalving(settings, axis, size, pass);
    return true;
  }
  const bool isPost = role == Role::kPostProcessor;
  pass.precisionBits = isPost && HasFixedWidth(settings.filter) ? kFixedWidthPostBits : kInterfaceBits;
  const bool keepsPlaces = PlanLastStep(settings, axis, size, halvings, pass);
  const bool keepsSamples = (pass.repeatedSize > 0) == axis.dropsOut && keepsPlaces;
  return !(keepsSamples && IsUnity(pass));
}

}  // namespace vidproc
