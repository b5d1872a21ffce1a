#include "pipeline/stage.h"

#include <bit>

namespace vidproc {

void Stage::Hold(std::int32_t count) {
  const auto powerOfTwo = static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(count)));
  const bool holdsAll = powerOfTwo >= shape.height;
  const std::int32_t slots = holdsAll ? shape.height : powerOfTwo;
  rows = RowStore(shape.RowBytes(), slots);
  slotMask = holdsAll ? -1 : slots - 1;
  rowInSlot.assign(static_cast<std::size_t>(slots), -1);
}

}  // namespace vidproc
