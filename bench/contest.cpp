#include "contest.h"

#include <cstring>

#include "levels/cpu_level.h"

namespace bench {
namespace {

std::string Name(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

std::vector<Contest> ThreeScalings(const std::string& work) {
  return {{.work = work, .in = k720p, .out = k360p},
          {.work = work, .in = k1080p, .out = k720p},
          {.work = work, .in = k360p, .out = k720p}};
}

}  // namespace

std::string Name(const Contest& contest, const std::string& contestant) {
  std::string name = contest.work + "/" + Name(contest.in);
  if (Name(contest.out) != Name(contest.in)) name.append("-").append(Name(contest.out));
  return name.append("/").append(contestant);
}

void EnterLevels(const Contest& contest, const std::function<Run()>& make) {
  for (const vidproc::Level level : vidproc::kAllLevels) {
    if (!vidproc::IsLevelAvailable(level)) continue;
    Enter(contest, std::string("vidproc-") + vidproc::LevelName(level), [=] {
      vidproc::CapLevel(level);
      return make();
    });
  }
}

void EnterCopy(const Contest& contest) {
  Enter(contest, "memcpy", [bytes = FrameBytes(contest.format, contest.out)] {
    return [=](const std::uint8_t* source, std::uint8_t* destination) { std::memcpy(destination, source, bytes); };
  });
}

std::vector<Contest> ScaleContests(int soften) { return ThreeScalings("scale" + std::to_string(soften)); }

std::vector<Contest> PostScaleContests() { return ThreeScalings("postscale"); }

Contest PostSharpenContest() { return {.work = "postscale", .in = k720p, .out = k720p}; }

std::vector<Contest> AdaptiveContests(const std::string& work) {
  std::vector<Contest> contests = ThreeScalings(work);
  for (Contest& contest : contests) contest.frames = kHistoryFrames;
  return contests;
}

std::vector<Contest> TemporalContests() {
  constexpr Size kWholeSegments{1920, 1088};
  return {{.work = "temporal", .in = k720p, .out = k720p, .frames = kHistoryFrames},
          {.work = "temporal", .in = kWholeSegments, .out = kWholeSegments, .frames = kHistoryFrames}};
}

Contest DeblockContest() { return {.work = "deblock", .in = k720p, .out = k720p, .inPlace = true}; }

Contest Nv12Contest() { return {.work = "nv12", .in = k720p, .out = k360p, .format = Format::kNv12}; }

Contest NoiseContest() { return {.work = "noise", .in = k720p, .out = k720p, .inPlace = true}; }

std::vector<Contest> MemoryContests() {
  std::vector<Contest> contests;
  for (const Size out : {Size{320, 180}, k360p, Size{960, 540}, k720p, k1080p, Size{3840, 2160}}) {
    contests.push_back(
        {.work = "memory", .in = {2 * out.width, 2 * out.height}, .out = out, .frames = Contest::kFromMemory});
  }
  return contests;
}

std::vector<Contest> AutomaticContests(int taps) {
  std::vector<Contest> contests = ThreeScalings(taps == 16 ? "automatic16" : "automatic");
  for (Contest& contest : contests) contest.format = Format::kI420;
  return contests;
}

Contest AutomaticNv12Contest() {
  return {.work = "automatic-nv12", .in = k720p, .out = k360p, .format = Format::kNv12};
}

Contest PostAutomaticContest() {
  return {.work = "post-automatic", .in = k360p, .out = k720p, .format = Format::kI420};
}

Contest DenoiseContest(int taps) {
  return {.work = taps == 16 ? "denoise16" : "denoise",
          .in = k720p,
          .out = k720p,
          .format = Format::kI420,
          .frames = kHistoryFrames};
}

Contest DenoiseAndScaleContest() {
  return {.work = "denoise-and-scale", .in = k720p, .out = k360p, .format = Format::kI420, .frames = kHistoryFrames};
}

}  // namespace bench
