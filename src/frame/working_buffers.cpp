#include "frame/working_buffers.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

#include "frame/zeroed_memory.h"

namespace vidproc {
namespace {

/// Larger of two sizes, rounded up to whole groups of 16.
std::uint64_t LargerIn16(std::uint32_t a, std::uint32_t b) { return (std::uint64_t{std::max(a, b)} + 15) / 16 * 16; }

std::uint64_t BufferBytes(std::uint64_t rows, std::uint64_t rowBytes) {
  constexpr std::uint64_t kMaxBytes = std::numeric_limits<std::int32_t>::max();
  if (rowBytes != 0 && rows > kMaxBytes / rowBytes) throw std::bad_array_new_length();
  return rows * rowBytes;
}

void TakeIfMissing(std::uint8_t*& buffer, std::uint64_t& capacity, std::uint64_t rows, std::uint64_t rowBytes) {
  if (buffer != nullptr) return;
  const std::uint64_t bytes = BufferBytes(rows, rowBytes);
  buffer = TakeZeroed<std::uint8_t>(bytes).release();
  capacity = bytes;
}

}  // namespace

void TakeWorkingBuffers(VideoProcessor& p, BufferCapacities& held) {
  const std::uint64_t rows = LargerIn16(p.inHeight, p.outHeight) + 32;
  const std::uint64_t rowBytes = 2 * LargerIn16(p.inStride, p.outStride) + 64;
  if (p.scratchA == nullptr || p.scratchB == nullptr) {
    const std::uint64_t bytes = BufferBytes(2 * rows, rowBytes);
    auto newA = p.scratchA == nullptr ? TakeZeroed<std::int16_t>(bytes) : nullptr;
    auto newB = p.scratchB == nullptr ? TakeZeroed<std::int16_t>(bytes) : nullptr;
    held.scratch = newA && newB ? bytes : std::min(held.scratch, bytes);
    if (newA) p.scratchA = newA.release();
    if (newB) p.scratchB = newB.release();
  }
  TakeIfMissing(p.previousFrame, held.previousFrame, rows, rowBytes);
}

void TakeSmoothingBuffers(VideoProcessor& p, BufferCapacities& held) {
  const std::uint64_t rows = LargerIn16(p.inHeight, p.outHeight);
  const std::uint64_t stride = LargerIn16(p.inStride, p.outStride);
  TakeIfMissing(p.smoothingBufferSmall, held.smoothingSmall, rows, 4 * stride);
  TakeIfMissing(p.smoothingBufferLarge, held.smoothingLarge, rows, 16 * stride);
}

void ReleaseSmoothingBuffers(VideoProcessor& p) noexcept {
  std::free(p.smoothingBufferSmall);
  std::free(p.smoothingBufferLarge);
  p.smoothingBufferSmall = p.smoothingBufferLarge = nullptr;
}

void ReleaseAllBuffers(VideoProcessor& p) noexcept {
  std::free(p.scratchA);
  std::free(p.scratchB);
  std::free(p.previousFrame);
  ReleaseSmoothingBuffers(p);
}

}  // namespace vidproc
