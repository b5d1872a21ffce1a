// All that the library asks of a compiler beyond standard C++, and what one other than GCC and clang has in its place.
// Not here: the processors' intrinsics in src/simd, the vectors that simd/portable.h is made of, which only these two
// compilers have, and the mark of exported names in vidproc/export.h.
#pragma once

#include <cmath>
#include <string_view>

namespace vidproc {
namespace {

enum class Processor { kX86, kAArch64, kWebAssembly, kOther };
#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
constexpr Processor kProcessor = Processor::kX86;
#elif defined(__aarch64__) || defined(_M_ARM64)
constexpr Processor kProcessor = Processor::kAArch64;
#elif defined(__wasm__)
constexpr Processor kProcessor = Processor::kWebAssembly;
#else
constexpr Processor kProcessor = Processor::kOther;
#endif

// VIDPROC_STANDARD_ALONE shows with any compiler that results need nothing else.
#if defined(__GNUC__) && !defined(VIDPROC_STANDARD_ALONE)

/// For the steps of a row, which would cost more as calls.
#define VIDPROC_ALWAYS_INLINE [[gnu::always_inline]] inline

// The compiler for Windows has to be told whose conversions the C library there takes.
#ifdef __MINGW_PRINTF_FORMAT
#define VIDPROC_PRINTF_DIALECT __MINGW_PRINTF_FORMAT
#else
#define VIDPROC_PRINTF_DIALECT printf
#endif
/// Has the compiler check a function's parameters from number `values` on against the one with number `text`.
#define VIDPROC_CHECKED_AS_PRINTF(text, values) [[gnu::format(VIDPROC_PRINTF_DIALECT, text, values)]]

/// Asks for the line of memory at `address`, which need not be readable, before it is read or written.
VIDPROC_ALWAYS_INLINE void Prefetch(const void* address) { __builtin_prefetch(address); }
VIDPROC_ALWAYS_INLINE void PrefetchToWrite(void* address) { __builtin_prefetch(address, 1); }

/// The processor's instruction, in unoptimised code too.
VIDPROC_ALWAYS_INLINE double SquareRoot(double value) { return __builtin_sqrt(value); }

/// Whether this x86 processor has the instructions that GCC calls `feature`; false on any other.
#if defined(__x86_64__) || defined(__i386__)
// Static objects may ask before the compiler's own constructor has looked at the processor.
#define VIDPROC_PROCESSOR_HAS(feature) (__builtin_cpu_init(), __builtin_cpu_supports(feature) != 0)
#else
#define VIDPROC_PROCESSOR_HAS(feature) false
#endif

#else
#define VIDPROC_ALWAYS_INLINE inline
#define VIDPROC_CHECKED_AS_PRINTF(text, values)
VIDPROC_ALWAYS_INLINE void Prefetch(const void*) {}
VIDPROC_ALWAYS_INLINE void PrefetchToWrite(void*) {}
VIDPROC_ALWAYS_INLINE double SquareRoot(double value) { return std::sqrt(value); }
#define VIDPROC_PROCESSOR_HAS(feature) (kProcessor == Processor::kX86 && std::string_view(feature) == "sse2")
#endif

}  // namespace
}  // namespace vidproc
