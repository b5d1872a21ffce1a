// Dither noise for kernels: added to finished rows, piece by piece, while they are in the cache.
#pragma once

#include "passes/noise_field.h"

namespace vidproc::VIDPROC_TARGET {

/// Adds noise to bytes first..end - 1 of one noise row; the first of them lies at `bytes`. `noise` is the row's line in
/// the first patch row of NoiseField::noise, to which the positions of its blocks are added.
void AddNoiseToRow(const signed char* noise, const std::uint16_t* blockPosition, std::uint8_t* bytes,
                   std::uint32_t first, std::uint32_t end);

/// Adds the noise to bytes offset.. of the linear frame, which lie at `bytes`; those outside the noise's rows stay as
/// they are. Pieces come in ascending, adjoining order, because the positions of a band are drawn when it is reached.
void AddNoise(NoiseField& field, std::uint8_t* bytes, std::uint64_t offset, std::uint64_t count);

}  // namespace vidproc::VIDPROC_TARGET
