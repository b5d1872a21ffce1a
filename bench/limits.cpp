// What the machine can do at most: 16-bit multiplications in registers, copies of a frame from a cache and from memory.
#include "contest.h"

namespace bench {
namespace {

constexpr int kChains = 12;  // more than the latency of a multiplication times its throughput

// 32 multiplications for every byte of a frame. The vector's width has to be known before inlining, so this is a macro.
#define VIDPROC_MULTIPLY(name, target, bytes)                                            \
  target void name(std::size_t count) {                                                  \
    using Lanes [[gnu::vector_size(bytes)]] = unsigned short;                            \
    Lanes chains[kChains] = {};                                                          \
    Lanes factor = {};                                                                   \
    factor += 3;                                                                         \
    for (std::size_t done = 0; done < 32 * count; done += kChains * sizeof(Lanes) / 2) { \
      _Pragma("GCC unroll 12") for (Lanes & chain : chains) {                            \
        chain *= factor;                                                                 \
        VIDPROC_KEEP(chain);                                                             \
      }                                                                                  \
    }                                                                                    \
  }

#if defined(__x86_64__)
#define VIDPROC_KEEP(lanes) asm volatile("" : "+x"(lanes))
VIDPROC_MULTIPLY(Multiply16, , 16)
VIDPROC_MULTIPLY(Multiply32, [[gnu::target("avx2")]], 32)
VIDPROC_MULTIPLY(Multiply64, [[gnu::target("avx512bw")]], 64)
#else
#define VIDPROC_KEEP(lanes) asm volatile("" : "+w"(lanes))
VIDPROC_MULTIPLY(Multiply16, , 16)
#endif

void EnterMultiply(const char* contestant, void (*multiply)(std::size_t)) {
  const Contest contest = {.work = "limit-multiply", .in = k720p, .out = k720p, .writes = false};
  Enter(contest, contestant,
        [=] { return [=](const std::uint8_t*, std::uint8_t*) { multiply(FrameBytes(contest.format, contest.in)); }; });
}

const bool kEntered = [] {
  EnterMultiply("16-bytes", Multiply16);
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) EnterMultiply("32-bytes", Multiply32);
  if (__builtin_cpu_supports("avx512bw")) EnterMultiply("64-bytes", Multiply64);
#endif
  EnterCopy({.work = "limit-copy-cache", .in = k720p, .out = k720p});
  EnterCopy({.work = "limit-copy-memory", .in = k720p, .out = k720p, .frames = Contest::kFromMemory});
  return true;
}();

}  // namespace
}  // namespace bench
