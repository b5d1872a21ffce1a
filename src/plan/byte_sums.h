// When sums of bytes times coefficients fit the lanes of the byte forms.
#pragma once

#include <cstdint>

namespace vidproc {

/// Whether sums of `count` bytes times these stay inside 16 bits, in any order, and each fits a signed byte.
inline bool ByteProductsFitWords(const std::int16_t* coefficients, int count) {
  int positive = 0;
  int negative = 0;
  for (int i = 0; i < count; ++i) {
    if (coefficients[i] < -128 || coefficients[i] > 127) return false;
    (coefficients[i] > 0 ? positive : negative) += coefficients[i];
  }
  return positive * 255 <= 32767 && negative * 255 >= -32768;
}

}  // namespace vidproc
