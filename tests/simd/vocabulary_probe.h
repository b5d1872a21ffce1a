// The operations of a vocabulary as functions on blocks of memory, so that sets of different widths can be compared.
#pragma once

#include <cstdint>

namespace simd_probe {

constexpr int kBlockBytes = 256;

/// Two inputs and what an operation makes of them.
struct Blocks {
  alignas(64) std::uint8_t a[kBlockBytes];
  alignas(64) std::uint8_t b[kBlockBytes];
  alignas(64) std::uint8_t out[kBlockBytes];
};

struct Operation {
  const char* name;
  void (*apply)(Blocks& blocks);
};

struct Vocabulary {
  const Operation* operations;
  int count;
};

}  // namespace simd_probe
