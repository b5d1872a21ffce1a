#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/digest.h"
#include "golden/golden_cases.h"
#include "support/kernel_harness.h"
#include "support/planes_420.h"
#include "vidproc/video_processor.h"

namespace golden {
namespace {

using testing_support::Geometry;
using testing_support::Processor;

constexpr int kFrames = 3;
constexpr Geometry kGeometries[] = {
    {96, 48, 48, 24}, {90, 40, 60, 27, 6, 10}, {40, 30, 64, 45}, {51, 33, 51, 33, 0, 0}, {96, 48, 96, 48, 14, 0}};

struct Settings {
  std::uint32_t softening, strength, dither;
  std::uint8_t adaptive, temporalStrength, temporalShift, deblock;
  std::int16_t gain, offset;
};
constexpr Settings kSettings[] = {{10, 0, 0, 2, 100, 0, 30, 64, 0},
                                  {0, 3, 5, 0, 0, 3, 0, 64, 0},
                                  {40, 0, 0, 5, 127, 6, 255, 90, -20},
                                  {4, 16, 12, 1, 60, 8, 24, -30, 100}};

std::string Describe(const Geometry& g, const Settings& s) {
  std::ostringstream text;
  text << g.inWidth << "x" << g.inHeight << "+" << g.inPadding << " to " << g.outWidth << "x" << g.outHeight << "+"
       << g.outPadding << " softening " << s.softening << " strength " << s.strength << " dither " << s.dither
       << " adaptive " << int{s.adaptive} << " temporal " << int{s.temporalStrength} << ":" << int{s.temporalShift}
       << " deblock " << int{s.deblock} << " luma " << s.gain << ":" << s.offset;
  return text.str();
}

/// Source and destination of a geometry.
struct Frames {
  explicit Frames(const Geometry& g)
      : inStride(2 * g.inWidth + g.inPadding),
        source(static_cast<std::size_t>(inStride * g.inHeight)),
        destination(static_cast<std::size_t>((2 * g.outWidth + g.outPadding) * g.outHeight)) {}

  template <typename Call>
  std::uint64_t DigestOf(const Call& call) {
    fuzzing::Digest digest;
    for (int n = 0; n < kFrames; ++n) {
      PaintFrame(source, inStride, n);
      call(source.data(), destination.data());
      digest.Add(source.data(), source.size());
      digest.Add(destination.data(), destination.size());
    }
    return digest.Value();
  }

  int inStride;
  std::vector<std::uint8_t> source, destination;
};

std::uint64_t RunKernel(const testing_support::Kernel& kernel, const Geometry& g, const Settings& s) {
  const bool isPost = kernel.family == testing_support::Family::kPost;
  testing_support::Configuration configuration{g, s.softening, s.strength};
  configuration.windowKind = s.strength % 2 == 0 ? 2 : isPost ? 0 : 1;
  configuration.use16Taps = kernel.horizontalTaps == 16;
  const Processor p = testing_support::MakeProcessor(!isPost, configuration);
  p->InitLuminanceShiftTables(s.gain, s.offset);
  p->SetUseSpatialMotionSmoothing(kernel.motionGate);
  p->SetTemporalFilter(s.temporalStrength, s.temporalShift);
  p->SetAdaptive(s.adaptive);
  p->InitDeblocker(s.deblock);
  p->SetDeblockTestPattern(0);
  p->ditherLevel = s.dither;
  p->ditherSeed = 77;
  return Frames(g).DigestOf([&](std::uint8_t* source, std::uint8_t* destination) {
    p->srcFrame = source;
    p->dstFrame = destination;
    ((*p).*kernel.run)();
  });
}

/// The exported functions; a set-up's taps and motion smoothing come with its frames.
std::uint64_t RunExported(bool isPost, const Geometry& g, const Settings& s, std::uint8_t taps,
                          std::uint8_t smoothing) {
  void* handle = nullptr;
  const auto side = [](int length) { return static_cast<unsigned>(length); };
  (isPost ? PostProcInit : PreProcInit)(&handle, side(g.inWidth), side(g.inHeight), side(2 * g.inWidth + g.inPadding),
                                        side(g.outWidth), side(g.outHeight), side(2 * g.outWidth + g.outPadding),
                                        s.strength, s.dither, s.softening);
  const Processor p(static_cast<VideoProcessor*>(handle));
  p->ditherSeed = 200;
  return Frames(g).DigestOf([&](std::uint8_t* source, std::uint8_t* destination) {
    if (isPost) {
      PostProcExecute(handle, source, destination, s.deblock, s.gain, s.offset);
    } else {
      PreProcExecute(handle, source, destination, s.adaptive, taps, smoothing, s.temporalStrength, s.temporalShift,
                     s.gain, s.offset);
    }
  });
}

std::uint64_t RunPlanes(const Geometry& g) {
  void* handle = nullptr;
  const auto side = [](int length) { return static_cast<unsigned>(length); };
  VidProc420InterleavedInit(&handle, side(g.inWidth), side(g.inHeight), side(g.outWidth), side(g.outHeight));
  const Processor p(static_cast<VideoProcessor*>(handle));
  const int inStride = g.inWidth + g.inPadding, outStride = g.outWidth + g.outPadding;
  const int inRows = g.inHeight + (g.inHeight + 1) / 2, outRows = g.outHeight + (g.outHeight + 1) / 2;
  std::vector<std::uint8_t> source(static_cast<std::size_t>(inStride * inRows));
  std::vector<std::uint8_t> destination(static_cast<std::size_t>(outStride * outRows));
  fuzzing::Digest digest;
  for (int n = 0; n < kFrames; ++n) {
    PaintFrame(source, inStride, n);
    VidProc420InterleavedExecute(handle, source.data(), source.data() + inStride * g.inHeight, destination.data(),
                                 destination.data() + outStride * g.outHeight, side(g.inWidth), side(g.inHeight),
                                 side(inStride), side(inStride), side(g.outWidth), side(g.outHeight), side(outStride),
                                 side(outStride), 64, 0);
    digest.Add(destination.data(), destination.size());
  }
  return digest.Value();
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
      const Settings& s = kSettings[(i + i / 4) % std::size(kSettings)];
      cases.push_back(
          {std::string(kernel.name) + " " + Describe(g, s), false, [=] { return RunKernel(kernel, g, s); }});
    }
  }
  for (const Geometry& g : kGeometries) {
    for (const Settings& s : kSettings) {
      for (const bool smoothing : {false, true}) {
        const bool taps = !smoothing && s.adaptive % 2 != 0;
        const std::string switches = taps ? "16 taps " : smoothing ? "motion smoothing " : "";
        cases.push_back({"pre-processing " + switches + Describe(g, s), false,
                         [=] { return RunExported(false, g, s, taps, smoothing); }});
      }
      cases.push_back(
          {"post-processing " + Describe(g, s), false, [=] { return RunExported(true, g, s, false, false); }});
    }
    cases.push_back({"planes 4:2:0 " + Describe(g, {}), false, [=] { return RunPlanes(g); }});
  }
}

}  // namespace golden
