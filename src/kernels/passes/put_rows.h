// Writes finished rows to the destination, with noise added while they are in the cache.
#pragma once

#include <cstring>

#include "kernels/kernel_table.h"
#include "kernels/scale_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

/// Lets make(rows, stride) write rowCount rows, which end up in the destination from row firstRow on, and adds the
/// noise. The noise runs over packed rows: those of a padded destination are made in the strip's memory first.
template <class Make>
inline void PutRows(const ScaleJob& job, int firstRow, int rowCount, const Make& make) {
  const std::ptrdiff_t rowBytes = std::ptrdiff_t{2} * job.outWidth;
  std::uint8_t* const destination = job.destination + firstRow * job.destinationStride;
  const bool viaStrip = job.noise != nullptr && job.destinationStride != rowBytes;
  std::uint8_t* const rows = viaStrip ? job.strip.outRows : destination;
  make(rows, viaStrip ? rowBytes : job.destinationStride);
  if (job.noise == nullptr) return;
  const auto bytes = static_cast<std::size_t>(rowBytes);
  AddNoise(*job.noise, rows, static_cast<std::uint64_t>(firstRow) * bytes,
           static_cast<std::uint64_t>(rowCount) * bytes);
  if (!viaStrip) return;
  for (int r = 0; r < rowCount; ++r) {
    std::memcpy(destination + r * job.destinationStride, rows + r * rowBytes, bytes);
  }
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
