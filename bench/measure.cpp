// Times a contestant with Google Benchmark.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <limits>
#include <utility>

#include "contest.h"

namespace bench {
namespace {

/// The thread's own time in nanoseconds: what other programs take from it does not count.
std::int64_t ThreadTime() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// Source and destination memory of one contest.
class Frames {
 public:
  explicit Frames(const Contest& contest)
      : sourceBytes(FrameBytes(contest.format, contest.in)), destinationBytes(FrameBytes(contest.format, contest.out)) {
    if (contest.frames != Contest::kFromMemory) {
      for (int i = 0; i < contest.frames; ++i) sources.push_back(Frame(contest.format, contest.in, i).data());
      memory.resize(destinationBytes);
      destinations.assign(sources.size(), memory.data());
      return;
    }
    const Bytes& drawn = Frame(contest.format, contest.in, 0);
    const std::size_t pairBytes = Aligned(sourceBytes) + Aligned(destinationBytes);
    const std::size_t count = std::max<std::size_t>(2, ColdBytes() / pairBytes);
    static Bytes coldMemory;
    coldMemory.resize(std::max(coldMemory.size(), count * pairBytes));
    for (std::size_t i = 0; i < count; ++i) {
      std::uint8_t* source = coldMemory.data() + i * pairBytes;
      std::memcpy(source, drawn.data(), sourceBytes);
      sources.push_back(source);
      destinations.push_back(source + Aligned(sourceBytes));
    }
  }

  std::size_t Count() const { return sources.size(); }
  const std::uint8_t* Source(std::size_t i) const { return sources[i]; }
  std::uint8_t* Destination(std::size_t i) const { return destinations[i]; }
  std::size_t SourceBytes() const { return sourceBytes; }
  std::size_t DestinationBytes() const { return destinationBytes; }

 private:
  static std::size_t Aligned(std::size_t bytes) { return (bytes + 63) / 64 * 64; }

  /// Twice the last cache, within reason.
  static std::size_t ColdBytes() {
    const long lastCache = sysconf(_SC_LEVEL3_CACHE_SIZE);
    return std::clamp<std::size_t>(2 * static_cast<std::size_t>(std::max(lastCache, 0L)), 64u << 20, 512u << 20);
  }

  std::size_t sourceBytes, destinationBytes;
  Bytes memory;
  std::vector<const std::uint8_t*> sources;
  std::vector<std::uint8_t*> destinations;
};

/// A contestant that does nothing would win: the first frame must change what the destination holds.
bool LeavesResult(const Contest& contest, const Frames& frames, const Run& run) {
  constexpr std::uint8_t kMark = 0xA5;
  const Bytes& before = Frame(contest.format, contest.in, 0);
  std::uint8_t* destination = frames.Destination(0);
  const std::size_t bytes = frames.DestinationBytes();
  if (contest.inPlace) {
    std::memcpy(destination, before.data(), bytes);
    run(frames.Source(0), destination);
    return std::memcmp(destination, before.data(), bytes) != 0;
  }
  std::memset(destination, kMark, bytes);
  run(frames.Source(0), destination);
  return std::count(destination, destination + bytes, kMark) < static_cast<std::ptrdiff_t>(bytes / 2);
}

/// Warm frames: each timed alone, the fastest counts, which other programs on the machine disturb least. From memory:
/// whole laps, because single frames may by luck still be in a cache.
void Measure(benchmark::State& state, const Contest& contest, const std::function<Run()>& make) {
  const Run run = make();
  if (!run) {
    state.SkipWithError("cannot do this");
    return;
  }
  const Frames frames(contest);
  if (contest.writes && !LeavesResult(contest, frames, run)) {
    state.SkipWithError("left the destination as it was");
    return;
  }
  const bool byLap = contest.frames == Contest::kFromMemory;
  const std::size_t perTiming = byLap ? frames.Count() : 1;
  std::size_t i = 0;
  const auto runNext = [&] {
    run(frames.Source(i), frames.Destination(i));
    if (++i == frames.Count()) i = 0;
  };
  // The first frames meet fresh memory and no history; where a frame takes long, that is lost in it.
  constexpr std::int64_t kLongWarmUp = 20'000'000;
  const std::int64_t warmUpBegin = ThreadTime();
  for (std::size_t n = 0; !byLap && n < 2 * frames.Count() && ThreadTime() - warmUpBegin < kLongWarmUp; ++n) runNext();
  auto fastest = std::numeric_limits<std::int64_t>::max();
  for (auto _ : state) {
    if (contest.inPlace) std::memcpy(frames.Destination(i), frames.Source(i), frames.SourceBytes());
    const std::int64_t begin = ThreadTime();
    for (std::size_t n = 0; n < perTiming; ++n) runNext();
    fastest = std::min(fastest, ThreadTime() - begin);
  }
  state.counters["ms"] = static_cast<double>(fastest) / 1e6 / static_cast<double>(perTiming);
}

}  // namespace

void Enter(const Contest& contest, const std::string& contestant, std::function<Run()> make) {
  benchmark::RegisterBenchmark(
      Name(contest, contestant).c_str(),
      [contest, make = std::move(make)](benchmark::State& state) { Measure(state, contest, make); });
}

}  // namespace bench
