// What the machine has, and the one choice among the levels that this build carries.
#include <atomic>
#include <iterator>

#include "compiler/compiler.h"
#include "kernels/kernel_table.h"
#include "levels/cpu_level.h"
#include "levels/general_forms.h"

namespace vidproc {

#define VIDPROC_DECLARE_LEVEL(name)  \
  namespace name {                   \
  extern const KernelTable kKernels; \
  }
VIDPROC_DECLARE_LEVEL(scalar)
VIDPROC_DECLARE_LEVEL(portable)
VIDPROC_DECLARE_LEVEL(sse2)
VIDPROC_DECLARE_LEVEL(sse41)
VIDPROC_DECLARE_LEVEL(avx2)
VIDPROC_DECLARE_LEVEL(avx512)
VIDPROC_DECLARE_LEVEL(avx512vbmi)
VIDPROC_DECLARE_LEVEL(neon)
VIDPROC_DECLARE_LEVEL(wasm)
#undef VIDPROC_DECLARE_LEVEL

namespace {

struct LevelEntry {
  Level level;
  const char* name;
  const KernelTable* kernels;  ///< null: this build lacks the level
};

// Lowest first. The build system defines VIDPROC_HAS_<level> as 1 for the levels that it compiles, else as 0.
#define VIDPROC_LEVEL(level, name) \
  { Level::level, #name, VIDPROC_HAS_##name ? &name::kKernels : nullptr }
constexpr LevelEntry kEntries[] = {
    VIDPROC_LEVEL(kScalar, scalar),         VIDPROC_LEVEL(kPortable, portable), VIDPROC_LEVEL(kSse2, sse2),
    VIDPROC_LEVEL(kSse41, sse41),           VIDPROC_LEVEL(kAvx2, avx2),         VIDPROC_LEVEL(kAvx512, avx512),
    VIDPROC_LEVEL(kAvx512Vbmi, avx512vbmi), VIDPROC_LEVEL(kNeon, neon),         VIDPROC_LEVEL(kWasm, wasm),
};
#undef VIDPROC_LEVEL

static_assert(std::size(kEntries) == std::size(kAllLevels));
constexpr Level kHighestLevel = std::end(kAllLevels)[-1];

const LevelEntry& EntryOf(Level level) { return kEntries[static_cast<int>(level)]; }

const LevelEntry& BestEntryUpTo(Level highest) {
  const LevelEntry* best = nullptr;
  for (const LevelEntry& entry : kEntries) {
    // The lowest level of the build is taken as it is: there is nothing else to run.
    const bool usable =
        best == nullptr ? entry.kernels != nullptr : entry.level <= highest && IsLevelAvailable(entry.level);
    if (usable) best = &entry;
  }
  return *best;
}

std::atomic<const LevelEntry*> entryInUse{nullptr};
std::atomic<bool> generalFormsOnly{false};

const LevelEntry& EntryInUse() {
  const LevelEntry* entry = entryInUse.load(std::memory_order_relaxed);
  if (entry == nullptr) {
    // Two threads may both choose; they choose the same.
    entry = &BestEntryUpTo(kHighestLevel);
    entryInUse.store(entry, std::memory_order_relaxed);
  }
  return *entry;
}

}  // namespace

bool MachineHasLevel(Level level) {
#ifdef VIDPROC_EMULATE_WIDE
  const bool hasAvx512 = VIDPROC_PROCESSOR_HAS("avx2"), hasVbmi = hasAvx512;
#else
  const bool hasAvx512 = VIDPROC_PROCESSOR_HAS("avx512f") && VIDPROC_PROCESSOR_HAS("avx512bw") &&
                         VIDPROC_PROCESSOR_HAS("avx512dq") && VIDPROC_PROCESSOR_HAS("avx512vl");
  const bool hasVbmi = hasAvx512 && VIDPROC_PROCESSOR_HAS("avx512vbmi");
#endif
  switch (level) {
    case Level::kScalar:
    case Level::kPortable:
      return true;
    case Level::kSse2:
      return VIDPROC_PROCESSOR_HAS("sse2");
    case Level::kSse41:
      return VIDPROC_PROCESSOR_HAS("sse4.1");
    case Level::kAvx2:
      return VIDPROC_PROCESSOR_HAS("avx2");
    case Level::kAvx512:
      return hasAvx512;
    case Level::kAvx512Vbmi:
      return hasVbmi;
    case Level::kNeon:
      return kProcessor == Processor::kAArch64;
    case Level::kWasm:
      return kProcessor == Processor::kWebAssembly;
  }
  return false;
}
bool IsLevelAvailable(Level level) { return EntryOf(level).kernels != nullptr && MachineHasLevel(level); }
Level BestLevel() { return BestEntryUpTo(kHighestLevel).level; }
Level LevelInUse() { return EntryInUse().level; }
Level CapLevel(Level highest) {
  const LevelEntry& entry = BestEntryUpTo(highest);
  entryInUse.store(&entry, std::memory_order_relaxed);
  return entry.level;
}
void UseGeneralFormsOnly(bool only) { generalFormsOnly.store(only, std::memory_order_relaxed); }
bool GeneralFormsOnly() { return generalFormsOnly.load(std::memory_order_relaxed); }
const char* LevelName(Level level) { return EntryOf(level).name; }
const KernelTable& Kernels() { return *EntryInUse().kernels; }

}  // namespace vidproc
