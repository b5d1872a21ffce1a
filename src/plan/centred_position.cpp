#include "plan/centred_position.h"

namespace vidproc {
namespace {

std::int64_t FloorDivide(std::int64_t numerator, std::int64_t denominator) {
  const std::int64_t quotient = numerator / denominator;
  return quotient * denominator > numerator ? quotient - 1 : quotient;
}

}  // namespace

RowPosition LocateCentred(std::int64_t output, const Ratio& ratio, const SampleGrid& in, const SampleGrid& out) {
  const std::int64_t down = ratio.down;
  const std::int64_t up = ratio.up;
  // In sixteenths of an input sample, as a fraction.
  const std::int64_t numerator = 8 * ((2 * out.spacing * output + out.firstInHalves) * down - in.firstInHalves * up);
  const std::int64_t denominator = in.spacing * up;
  const std::int64_t sixteenths = FloorDivide(2 * numerator + denominator, 2 * denominator);
  const std::int64_t source = FloorDivide(sixteenths, kPhases);
  return {static_cast<std::int32_t>(source), static_cast<std::int32_t>(sixteenths - kPhases * source)};
}

}  // namespace vidproc
