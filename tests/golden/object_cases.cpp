#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "golden/golden_cases.h"
#include "support/kernel_harness.h"
#include "vidproc/video_processor.h"

namespace golden {
namespace {

using testing_support::Flush;
using testing_support::Geometry;

constexpr Geometry kGeometries[] = {
    {96, 48, 48, 24}, {90, 40, 60, 27, 6, 10}, {40, 30, 64, 45}, {51, 33, 51, 33, 0, 0}, {96, 48, 96, 48, 14, 0}};

constexpr Settings kSettings[] = {{.softening = 10, .adaptive = 2, .temporalStrength = 100, .deblock = 30},
                                  {.strength = 3, .dither = 5, .temporalShift = 3},
                                  {.softening = 40,
                                   .adaptive = 5,
                                   .temporalStrength = 127,
                                   .temporalShift = 6,
                                   .deblock = 255,
                                   .gain = 90,
                                   .offset = -20},
                                  {.softening = 4,
                                   .strength = 16,
                                   .dither = 12,
                                   .adaptive = 1,
                                   .temporalStrength = 60,
                                   .temporalShift = 8,
                                   .deblock = 24,
                                   .gain = -30,
                                   .offset = 100}};

std::string DescribeSizes(const Geometry& g) {
  std::ostringstream text;
  text << g.inWidth << "x" << g.inHeight << "+" << g.inPadding << " to " << g.outWidth << "x" << g.outHeight << "+"
       << g.outPadding;
  return text.str();
}

std::string Describe(const Geometry& g, const Settings& s) {
  std::ostringstream text;
  text << DescribeSizes(g) << " softening " << s.softening << " strength " << s.strength << " dither " << s.dither
       << " adaptive " << int{s.adaptive} << " temporal " << int{s.temporalStrength} << ":" << int{s.temporalShift}
       << " deblock " << int{s.deblock} << " luma " << s.gain << ":" << s.offset;
  return text.str();
}

}  // namespace

void AddObjectCases(std::vector<Case>& cases) {
  static constexpr testing_support::Kernel kDeblock = {
      .name = "Deblock", .run = &VideoProcessor::Deblock8x8, .family = testing_support::Family::kPost};
  std::vector<testing_support::Kernel> kernels(std::begin(testing_support::kKernels),
                                               std::end(testing_support::kKernels));
  kernels.push_back(kDeblock);
  for (const testing_support::Kernel& kernel : kernels) {
    for (std::size_t i = 0; i < std::size(kGeometries) * 2; ++i) {
      const Geometry& g = kGeometries[i / 2];
      const bool keepsSize = g.inWidth == g.outWidth && g.inHeight == g.outHeight;
      if (!keepsSize && (kernel.family == testing_support::Family::kTemporal || kernel.run == kDeblock.run)) continue;
      // Two settings for each geometry, others from one geometry to the next.
      const Settings& s = kSettings[(i + i / 4) % std::size(kSettings)];
      cases.push_back({std::string(kernel.name) + " " + Describe(g, s), false,
                       [=] { return StartKernel(kernel, g, s, Flush::kEnd); }});
    }
  }
  for (const Geometry& g : kGeometries) {
    for (const Settings& s : kSettings) {
      const auto add = [&](const std::string& route, Use use) {
        cases.push_back({route + Describe(g, s), false, [=] { return StartExported(use, g, s, Flush::kEnd); }});
      };
      const bool isOdd = s.adaptive % 2 != 0;
      add(isOdd ? "pre-processing 16 taps " : "pre-processing ", isOdd ? Use::kPre16Taps : Use::kPre);
      add("pre-processing motion smoothing ", Use::kPreMotionSmoothing);
      add("post-processing ", Use::kPost);
    }
    cases.push_back({"planes 4:2:0 " + DescribeSizes(g), false, [=] { return StartPlanes(g, Flush::kEnd); }});
  }
}

}  // namespace golden
