// What the machine has, and the one choice among the levels that this build carries.
#include <atomic>
#include <iterator>

#include "kernels/kernel_table.h"
#include "levels/general_forms.h"
#include "vidproc/cpu_level.h"

namespace vidproc {

#define VIDPROC_DECLARE_LEVEL(name)  \
  namespace name {                   \
  extern const KernelTable kKernels; \
  }
VIDPROC_DECLARE_LEVEL(scalar)
#ifdef VIDPROC_HAS_sse2
VIDPROC_DECLARE_LEVEL(sse2)
VIDPROC_DECLARE_LEVEL(sse41)
VIDPROC_DECLARE_LEVEL(avx2)
VIDPROC_DECLARE_LEVEL(avx512)
VIDPROC_DECLARE_LEVEL(avx512vbmi)
#endif
#ifdef VIDPROC_HAS_neon
VIDPROC_DECLARE_LEVEL(neon)
#endif
#undef VIDPROC_DECLARE_LEVEL

namespace {

struct LevelEntry {
  Level level;
  const char* name;
  const KernelTable* kernels;
  bool (*machineHasIt)();
};

bool Always() { return true; }

#ifdef VIDPROC_HAS_sse2
bool HasAvx512() {
#ifdef VIDPROC_EMULATE_WIDE
  return __builtin_cpu_supports("avx2") != 0;
#else
  return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
         __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
#endif
}
bool HasVbmi() {
#ifdef VIDPROC_EMULATE_WIDE
  return HasAvx512();
#else
  return HasAvx512() && __builtin_cpu_supports("avx512vbmi") != 0;
#endif
}
#endif

// Lowest first; a level that the build lacks has no kernels.
constexpr LevelEntry kEntries[] = {
    {Level::kScalar, "scalar", &scalar::kKernels, Always},
#ifdef VIDPROC_HAS_sse2
    {Level::kSse2, "sse2", &sse2::kKernels, [] { return __builtin_cpu_supports("sse2") != 0; }},
    {Level::kSse41, "sse41", &sse41::kKernels, [] { return __builtin_cpu_supports("sse4.1") != 0; }},
    {Level::kAvx2, "avx2", &avx2::kKernels, [] { return __builtin_cpu_supports("avx2") != 0; }},
    {Level::kAvx512, "avx512", &avx512::kKernels, HasAvx512},
    {Level::kAvx512Vbmi, "avx512vbmi", &avx512vbmi::kKernels, HasVbmi},
#else
    {Level::kSse2, "sse2", nullptr, Always},
    {Level::kSse41, "sse41", nullptr, Always},
    {Level::kAvx2, "avx2", nullptr, Always},
    {Level::kAvx512, "avx512", nullptr, Always},
    {Level::kAvx512Vbmi, "avx512vbmi", nullptr, Always},
#endif
#ifdef VIDPROC_HAS_neon
    {Level::kNeon, "neon", &neon::kKernels, Always},
#else
    {Level::kNeon, "neon", nullptr, Always},
#endif
};

static_assert(std::size(kEntries) == std::size(kAllLevels));
constexpr Level kHighestLevel = std::end(kAllLevels)[-1];

const LevelEntry& EntryOf(Level level) { return kEntries[static_cast<int>(level)]; }

const LevelEntry& BestEntryUpTo(Level highest) {
  const LevelEntry* best = &kEntries[0];
  for (const LevelEntry& entry : kEntries) {
    if (entry.level <= highest && IsLevelAvailable(entry.level)) best = &entry;
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

bool IsLevelAvailable(Level level) {
#ifdef VIDPROC_HAS_sse2
  __builtin_cpu_init();  // a static object may ask before the compiler's own constructor has looked at the processor
#endif
  return EntryOf(level).kernels != nullptr && EntryOf(level).machineHasIt();
}
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
