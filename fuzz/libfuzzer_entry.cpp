// The entry point that libFuzzer calls; the build names the target.
#include <algorithm>
#include <string_view>

#include "targets.h"

// NOLINTNEXTLINE(readability-identifier-naming): libFuzzer's name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  static const auto* const kTarget =
      std::ranges::find(fuzzing::kTargets, std::string_view(VIDPROC_FUZZ_TARGET), &fuzzing::Target::name);
  kTarget->run({bytes, count});
  return 0;
}
