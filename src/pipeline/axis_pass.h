// The passes that a component needs along one axis, from one size, sampling and siting to another: halvings where the
// taps cannot carry the ratio, then the step with the asked filter.
#pragma once

#include <cstdint>
#include <vector>

#include "filters/phase_bank.h"
#include "filters/resampling_bank.h"
#include "kernels/scale_job.h"
#include "pipeline/pipeline.h"
#include "plan/phase_position.h"

namespace vidproc {

/// Kernels whose width is given, whatever the ratio; and what kind they are.
inline bool HasFixedWidth(ScalingFilter filter) { return filter >= ScalingFilter::kGaussian; }
filters::KernelKind KindOf(ScalingFilter filter);

/// One pass: where its outputs lie and what their taps weigh.
struct AxisPass {
  std::vector<PhasePosition> positions;
  filters::Bank bank;
  std::int32_t taps;
  std::int32_t precisionBits;
  /// Positions count every sample of the component twice, up to this size; 0: once.
  std::int32_t repeatedSize;
};

/// One axis of one component. Alignment by corners scales the chroma rows of 4:2:0 as if they stood twice in the
/// picture, and then takes the second of every two.
struct AxisRequest {
  std::int32_t in, out;      ///< luma sizes of the picture
  std::int32_t componentIn;  ///< samples of the component
  std::int32_t componentOut;
  SampleGrid gridIn, gridOut;
  bool repeatsIn, dropsOut;
  std::int32_t taps;
  bool operator==(const AxisRequest&) const = default;
};

/// A pass that picks samples and leaves them as they are.
AxisPass PickSamples(std::vector<PhasePosition> positions);

/// How often the axis is halved first.
std::int32_t HalvingsOf(const ScalingSettings& settings, const AxisRequest& axis);

/// Plans pass number 0..HalvingsOf. @return whether the axis needs it; without, samples stay as they are.
/// @throws std::bad_alloc
bool PlanAxisPass(const ScalingSettings& settings, Role role, const AxisRequest& axis, std::int32_t number,
                  AxisPass& pass);

}  // namespace vidproc
