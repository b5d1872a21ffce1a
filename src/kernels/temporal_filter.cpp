// Same-size temporal filter: blends each byte with the reference, the less the more its neighbourhood has changed.
//
//   d = |P - S|                                        own change; du, dd those of the segments before and after
//   m = max((((du + dd + 1) >> 1) + d + 1) >> 1, d)    measure of change
//   a = ((256 - LostWeight(m)) * strength + 128) >> 8  weight of the reference
//   out = ((128 - a) * S + a * P + 64) >> 7
//
// The frame is walked as segments of as many bytes as it has rows, one segment per byte of a row, not as rows: this
// decides which bytes are neighbours. The first and the last segment are their own outer neighbours.
// kept: the last segmentBytes mod 16 bytes of a segment are not filtered; the destination keeps what it held.
// kept: in place, the segment before has already been filtered when it is the neighbour.
#include <cstring>

#include "kernels/denoise_taps.h"
#include "kernels/kernel_table.h"
#include "kernels/passes/byte_arithmetic.h"
#include "kernels/passes/result_policy.h"
#include "kernels/temporal_job.h"

namespace vidproc::VIDPROC_TARGET {
namespace {

constexpr int kGroupBytes = 16;

/// Positions of one sweep over all segments: bounds the memory of the changes, and keeps it in the cache.
constexpr int kSweepBytes = 2048;

/// The blend in 16-bit lanes, for any strength.
struct LaneBlend {
  int strength;
  int shift;
  U8 operator()(U8 source, U8 reference, U8 measure) const {
    const Halves s = Split(source);
    const Halves p = Split(reference);
    const Halves m = Split(measure);
    return Join(BlendWithReference(s.low, p.low, m.low, strength, shift),
                BlendWithReference(s.high, p.high, m.high, strength, shift));
  }
};

/// The same by table, for strengths below 128: no sum saturates, and all weights, 0..128, fit a signed byte once
/// negated. Measures of 16 and more have one weight, as their squares are all capped at 256.
struct TableBlend {
  U8 negatedWeights;  ///< of the measures below 16, xor farWeight: a look-up gives 0 for all others
  U8 farWeight;       ///< negated, of those others

  TableBlend(int strength, int shift) {
    const int boundedShift = shift < kClearingShift ? shift : kClearingShift;
    const auto negatedWeight = [=](int measure) { return -int{WeightAt(measure, strength, boundedShift)}; };
    const int far = negatedWeight(16);
    std::uint8_t table[16];
    for (int m = 0; m < 16; ++m) table[m] = static_cast<std::uint8_t>(negatedWeight(m) ^ far);
    negatedWeights = LoadRepeated(table);
    farWeight = SplatU8(far);
  }

  U8 operator()(U8 source, U8 reference, U8 measure) const {
    const U8 referenceWeight = Xor(LookUpBelow16(negatedWeights, measure), farWeight);
    const U8 sourceWeight = Subtract(SplatU8(0x80), referenceWeight);
    const Halves sum = MultiplyPairsOf(source, reference, sourceWeight, referenceWeight);
    return Join(RoundShiftNegated<7>(sum.low), RoundShiftNegated<7>(sum.high));
  }
};

/// How bytes are loaded and stored: as whole vectors or, where fewer are left, as the same 16 bytes in every tile.
struct WholeVector {
  static constexpr int kBytes = kVectorBytes;
  static U8 Load(const std::uint8_t* p) { return LoadU8(p); }
  static void Put(std::uint8_t* p, U8 a) { Store(p, a); }
};
struct OneGroup {
  static constexpr int kBytes = kGroupBytes;
  static U8 Load(const std::uint8_t* p) { return LoadRepeated(p); }
  static void Put(std::uint8_t* p, U8 a) { StoreTiles(p, 0, a); }
};

template <class Access>
inline U8 ChangeAt(const std::uint8_t* source, const std::uint8_t* reference) {
  return AbsoluteDifference(Access::Load(source), Access::Load(reference));
}

/// The changes of the segment before and of the segment itself. Each is formed once, before its reference is refreshed.
struct Changes {
  std::uint8_t* before;
  std::uint8_t* own;
};

/// Filters bytes begin..end - 1 of a segment as far as whole pieces go; returns where it stopped. The segment after
/// lies `step` bytes further; the last one has a step of 0. Its changes replace those of the segment before.
template <bool kInPlace, class Access, class Blend>
inline int FilterPieces(const Blend& sharedBlend, const TemporalJob& job, std::ptrdiff_t segment, std::ptrdiff_t step,
                        Changes changes, int begin, int end) {
  const Blend blend = sharedBlend;  // no store of bytes can change a copy, so that it stays in registers
  const std::uint8_t* source = job.source + segment;
  std::uint8_t* reference = job.reference + segment;
  std::uint8_t* destination = job.destination + segment;
  int j = begin;
  for (; j + Access::kBytes <= end; j += Access::kBytes) {
    const U8 own = Access::Load(changes.own + j);
    const U8 after = ChangeAt<Access>(source + step + j, reference + step + j);
    const U8 around = Average(Access::Load(changes.before + j), after);
    const U8 measure = Max(Average(around, own), own);
    const U8 p = Access::Load(reference + j);
    const U8 result = blend(Access::Load(source + j), p, measure);
    Access::Put(changes.before + j, after);
    if constexpr (kInPlace) Access::Put(changes.own + j, AbsoluteDifference(p, result));
    Access::Put(destination + j, result);
    Access::Put(reference + j, result);
  }
  return j;
}

/// Filters `count` bytes of every segment; the job's pointers lead to those of the first segment.
template <bool kInPlace, class Blend>
inline void FilterSweep(const Blend& blend, const TemporalJob& job, int count) {
  std::uint8_t memory[2][kSweepBytes];
  Changes changes{memory[0], memory[1]};
  for (int j = 0; j < count; j += kGroupBytes) {
    const U8 change = ChangeAt<OneGroup>(job.source + j, job.reference + j);
    OneGroup::Put(changes.before + j, change);
    OneGroup::Put(changes.own + j, change);
  }
  for (int i = 0; i < job.segments; ++i) {
    const std::ptrdiff_t segment = std::ptrdiff_t{i} * job.segmentBytes;
    const std::ptrdiff_t step = i + 1 < job.segments ? job.segmentBytes : 0;
    const int rest = FilterPieces<kInPlace, WholeVector>(blend, job, segment, step, changes, 0, count);
    FilterPieces<kInPlace, OneGroup>(blend, job, segment, step, changes, rest, count);
    changes = {changes.own, changes.before};
  }
}

template <class Blend>
void Filter(const Blend& blend, const TemporalJob& job) {
  const int filtered = job.segmentBytes - job.segmentBytes % kGroupBytes;
  TemporalJob sweep = job;
  for (int first = 0; first < filtered; first += kSweepBytes) {
    sweep.source = job.source + first;
    sweep.reference = job.reference + first;
    sweep.destination = job.destination + first;
    const int count = filtered - first < kSweepBytes ? filtered - first : kSweepBytes;
    if (job.source == job.destination) {
      FilterSweep<true>(blend, sweep, count);
    } else {
      FilterSweep<false>(blend, sweep, count);
    }
  }
  const auto unfiltered = static_cast<std::size_t>(job.segmentBytes - filtered);
  if (unfiltered == 0) return;
  for (int i = 0; i < job.segments; ++i) {
    const std::ptrdiff_t tail = std::ptrdiff_t{i} * job.segmentBytes + filtered;
    std::memmove(job.reference + tail, job.destination + tail, unfiltered);
  }
}

}  // namespace

void TemporalFilter(const TemporalJob& job) {
  if (job.form == Form::kProven) return Filter(TableBlend(job.strength, job.shift), job);
  Filter(LaneBlend{job.strength, job.shift}, job);
}

}  // namespace vidproc::VIDPROC_TARGET
