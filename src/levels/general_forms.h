// A switch for tests: kernels choose a faster form where it is provably exact, and tests hold both to the reference.
#pragma once

#include "levels/cpu_level.h"

namespace vidproc {

/// Whether kernels of the level choose at all: those with byte shuffles do.
constexpr bool HasFasterForms(Level level) { return level >= Level::kSse41; }

/// Makes kernels use only the forms that are exact for every bank and setting. Results are the same either way. Not to
/// be called while another thread is inside the library.
void UseGeneralFormsOnly(bool only);
bool GeneralFormsOnly();

}  // namespace vidproc
