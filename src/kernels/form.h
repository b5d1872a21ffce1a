// Which form of a kernel runs. Results are the same either way.
#pragma once

#include <cstdint>

namespace vidproc {

enum class Form : std::uint8_t {
  kGeneral,  ///< exact for every bank and setting
  kProven,   ///< faster; for banks and settings that src/plan has proven it exact for, at levels that have it
};

}  // namespace vidproc
