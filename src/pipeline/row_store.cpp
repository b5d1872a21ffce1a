#include "pipeline/row_store.h"

#include <algorithm>

#include "kernels/row_jobs.h"

namespace vidproc {
namespace {

constexpr std::ptrdiff_t kCacheLine = 64;
static_assert(kRowMargin % kCacheLine == 0 && kRowMargin <= kRowSlack);

}  // namespace

/// Every row starts at a cache line; the margin behind it is part of its slack.
RowStore::RowStore(std::int32_t rowBytes, std::int32_t rows) {
  const std::ptrdiff_t longest = std::max(rowBytes, kMinRowBytes);
  pitch = (kRowMargin + longest + kRowSlack + kCacheLine - 1) / kCacheLine * kCacheLine;
  memory = std::make_unique<std::uint8_t[]>(static_cast<std::size_t>(pitch * rows + kCacheLine));
  const auto misaligned = static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(memory.get()) % kCacheLine);
  firstRow = memory.get() + (kCacheLine - misaligned) % kCacheLine + kRowMargin;
}

}  // namespace vidproc
