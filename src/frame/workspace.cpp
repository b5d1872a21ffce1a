// One block of memory, divided into pieces that start on cache lines of their own.
#include "frame/workspace.h"

#include <new>

#include "plan/strip_sizes.h"
#include "vidproc/video_processor.h"

namespace vidproc {
namespace {

constexpr std::uint64_t kCacheLine = 64;

/// Allocates consecutive pieces of a block of memory; only measures them while there is none yet.
class Arena {
 public:
  explicit Arena(std::uint8_t* start) : start(start) {}

  template <class Value>
  void Allocate(Value*& piece, std::uint64_t count) {
    if (start != nullptr) piece = reinterpret_cast<Value*>(start + used);
    used += (count * sizeof(Value) + kCacheLine - 1) / kCacheLine * kCacheLine;
  }
  std::uint64_t Used() const { return used; }

 private:
  std::uint8_t* start;
  std::uint64_t used = 0;
};

void AllocateAll(Arena& arena, const FrameSizes& sizes, Workspace& workspace) {
  const std::uint64_t inRowBytes = 2 * sizes.inWidth;
  const std::uint64_t stripOutput = StripOutputSize(2 * sizes.outWidth);
  StripMemory& strip = workspace.strip;
  arena.Allocate(strip.rows, StripRowValues(inRowBytes));
  arena.Allocate(strip.columns, StripColumnValues(inRowBytes));
  arena.Allocate(strip.outColumns, stripOutput);
  arena.Allocate(strip.outRows, stripOutput);
  arena.Allocate(strip.previousVerticalPiece, stripOutput);
  arena.Allocate(workspace.planMemory.rows, sizes.outHeight);
  arena.Allocate(workspace.planMemory.lumaColumns, sizes.outWidth);
  arena.Allocate(workspace.planMemory.chromaColumns, sizes.outWidth / 2 + 1);
  arena.Allocate(workspace.planMemory.rowPatterns, ByteRowPlanBytes(sizes.outWidth));
  const bool narrow = inRowBytes < kMinRowBytes;
  arena.Allocate(workspace.narrowRows, narrow ? sizes.inHeight * kMinRowBytes : 0);
  arena.Allocate(workspace.narrowPreviousInput, narrow ? sizes.outHeight * kMinRowBytes : 0);
  arena.Allocate(workspace.deblockRows, RowsAboveBytes(inRowBytes));
  arena.Allocate(workspace.deblockSources, sizes.inWidth);
}

}  // namespace

void Workspace::Reserve(const FrameSizes& sizes) {
  if (sizes == reservedFor) return;
  Arena measure(nullptr);
  AllocateAll(measure, sizes, *this);
  const std::uint64_t bytes = measure.Used() + kCacheLine;
  if (bytes > memoryBytes) {
    memory = TakeZeroed<std::uint8_t>(bytes);
    memoryBytes = bytes;
  }
  const auto misaligned = reinterpret_cast<std::uintptr_t>(memory.get()) % kCacheLine;
  Arena arena(memory.get() + (misaligned == 0 ? 0 : kCacheLine - misaligned));
  AllocateAll(arena, sizes, *this);
  strip.rowPitch = static_cast<std::ptrdiff_t>(StripRowPitch(2 * sizes.inWidth));
  reservedFor = sizes;
  plan.Invalidate();
}

bool Workspace::TryToReserve(const FrameSizes& sizes) {
  try {
    Reserve(sizes);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

FrameSizes FrameSizesOf(const VideoProcessor& p) { return {p.inWidth, p.inHeight, p.outWidth, p.outHeight}; }

}  // namespace vidproc
