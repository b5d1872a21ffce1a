// The same calls at every level of this machine, and where forms are chosen also with the general ones: any difference
// is a fault.
#include <vector>

#include "levels/cpu_level.h"
#include "levels/general_forms.h"
#include "targets.h"

namespace fuzzing {
namespace {

struct RestoreLevel {
  ~RestoreLevel() {
    vidproc::CapLevel(vidproc::BestLevel());
    vidproc::UseGeneralFormsOnly(false);
  }
};

}  // namespace

void FuzzLevels(Input input) {
  const RestoreLevel restore;
  const auto run = input.OneIn(2) ? RunObjects : RunInterface;
  bool isFirst = true;
  std::uint64_t expected = 0;
  for (const vidproc::Level level : vidproc::kAllLevels) {
    if (!vidproc::IsLevelAvailable(level)) continue;
    vidproc::CapLevel(level);
    for (const bool generalOnly : {false, true}) {
      if (generalOnly && !vidproc::HasFasterForms(level)) continue;
      vidproc::UseGeneralFormsOnly(generalOnly);
      Input same = input;
      const std::uint64_t digest = run(same, Run::kRepeatable);
      if (isFirst) expected = digest;
      isFirst = false;
      Require(digest == expected, std::string("the same bytes at level ") + vidproc::LevelName(level) +
                                      (generalOnly ? ", general forms" : ""));
    }
  }
}

}  // namespace fuzzing
