// One block of memory, dealt out in cache lines: first measured, then taken, then handed to the pieces.
#include "frame/workspace.h"

#include <new>

namespace vidproc {
namespace {

constexpr std::uint64_t kLine = 64;

/// Deals out consecutive pieces of memory; measures them when there is none yet.
class Dealer {
 public:
  explicit Dealer(std::uint8_t* start) : start(start) {}

  template <class Value>
  void Deal(Value*& piece, std::uint64_t count) {
    if (start != nullptr) piece = reinterpret_cast<Value*>(start + used);
    std::uint64_t bytes = 0;
    if (__builtin_mul_overflow(count, sizeof(Value), &bytes) || __builtin_add_overflow(bytes, kLine - 1, &bytes) ||
        __builtin_add_overflow(used, bytes / kLine * kLine, &used)) {
      throw std::bad_alloc();
    }
  }
  std::uint64_t Used() const { return used; }

 private:
  std::uint8_t* start;
  std::uint64_t used = 0;
};

void DealAll(Dealer& dealer, const FrameSizes& sizes, Workspace& workspace) {
  // Strips keep 64 bytes for each byte of a row: 32 rows of 16-bit values or 64 rows of bytes.
  constexpr std::uint64_t kValues = kMaxStripRows / 2;
  const std::uint64_t pitch = 2 * sizes.inWidth + kRowSlack / 2;
  StripMemory& strip = workspace.strip;
  dealer.Deal(strip.rows, kValues * pitch);
  dealer.Deal(strip.columns, kValues * (2 * sizes.inWidth + 2 * kEdgeColumns + kRowSlack));
  dealer.Deal(strip.outColumns, kMaxStripRows * (2 * sizes.outWidth + kRowSlack));
  dealer.Deal(strip.outRows, kMaxStripRows * (2 * sizes.outWidth + kRowSlack));
  dealer.Deal(strip.motionColumns, kMaxStripRows * (2 * sizes.outWidth + kRowSlack));
  dealer.Deal(workspace.planMemory.rows, sizes.outHeight);
  dealer.Deal(workspace.planMemory.columns, sizes.outWidth);
  dealer.Deal(workspace.planMemory.rowPatterns, RowPlanBytes(sizes.outWidth));
  const bool narrow = 2 * sizes.inWidth < kMinRowBytes;
  dealer.Deal(workspace.narrowRows, narrow ? sizes.inHeight * kMinRowBytes : 0);
  dealer.Deal(workspace.narrowMotionRows, narrow ? sizes.outHeight * kMinRowBytes : 0);
  dealer.Deal(workspace.deblockRows, 3 * (2 * sizes.inWidth + kRowSlack));
  dealer.Deal(workspace.deblockSources, sizes.inWidth);
}

}  // namespace

void Workspace::Reserve(const FrameSizes& sizes) {
  if (sizes == dealtFor) return;
  Dealer measure(nullptr);
  DealAll(measure, sizes, *this);
  const std::uint64_t bytes = measure.Used() + kLine;
  if (bytes > memoryBytes) {
    memory = std::make_unique<std::uint8_t[]>(bytes);
    memoryBytes = bytes;
  }
  const auto misaligned = reinterpret_cast<std::uintptr_t>(memory.get()) % kLine;
  Dealer dealer(memory.get() + (misaligned == 0 ? 0 : kLine - misaligned));
  DealAll(dealer, sizes, *this);
  strip.rowPitch = static_cast<std::ptrdiff_t>(2 * sizes.inWidth + kRowSlack / 2);
  dealtFor = sizes;
  plan.Invalidate();
}

}  // namespace vidproc
