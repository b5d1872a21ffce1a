// What a frame takes beside time: nothing. 10,000 frames of every route without an allocation; scripts/check_symbols
// sees that the library has no lock to take.
#include <gtest/gtest.h>

#include <vector>

#include "support/allocation_log.h"
#include "support/api_frames.h"
#include "support/failing_malloc.h"
#include "support/kernel_harness.h"
#include "vidproc/vidproc.hpp"

namespace {

using namespace testing_support;

constexpr int kFrames = 10'000;

/// The first frame after a set-up may take memory.
template <typename Call>
void ExpectNoAllocations(const Call& frame) {
  frame();
  const AllocationLog log;
  const MallocCount mallocs;
  for (int n = 0; n < kFrames; ++n) frame();
  EXPECT_EQ(log.Total(), 0u);
  EXPECT_EQ(mallocs.Bytes(), 0u);
}

struct Size {
  int inWidth, inHeight, outWidth, outHeight;
};
// What shrinks, keeps its size, and grows.
constexpr Size kSizes[] = {{34, 18, 17, 9}, {18, 16, 18, 16}, {9, 5, 18, 10}};

TEST(FramePath, KernelsTakeNoMemory) {
  for (const Kernel& kernel : kKernels) {
    for (const Size& size : kSizes) {
      SCOPED_TRACE(kernel.name);
      Configuration configuration{{size.inWidth, size.inHeight, size.outWidth, size.outHeight}, 10};
      configuration.use16Taps = kernel.horizontalTaps == 16;
      const Processor p = MakeProcessor(kernel.family != Family::kPost, configuration);
      p->SetUseSpatialMotionSmoothing(kernel.motionGate);
      p->SetAdaptive(2);
      p->ditherLevel = 5;
      if (kernel.family == Family::kPost) p->InitDeblocker(40);
      std::vector<std::uint8_t> source(std::size_t{p->inStride} * p->inHeight, 90);
      std::vector<std::uint8_t> destination(std::size_t{p->outStride} * p->outHeight);
      ExpectNoAllocations([&] {
        p->srcFrame = source.data();
        p->dstFrame = destination.data();
        ((*p).*kernel.run)();
      });
    }
  }
}

template <typename Stream, typename Options>
void ExpectStreamTakesNoMemory(const Options& options) {
  Stream stream(options);
  const TightFrame in(options.input, 90);
  TightFrame out(options.output, 0);
  const vidproc_input input = in.Read();
  const vidproc_output output = out.Write();
  ExpectNoAllocations([&] { stream.Process(input, output); });
}

TEST(FramePath, StreamsTakeNoMemory) {
  for (const vidproc_format format : kFormats) {
    for (const Size& size : kSizes) {
      SCOPED_TRACE(format);
      auto pre = WithSizes<vidproc::PreOptions>(size.inWidth, size.inHeight, size.outWidth, size.outHeight);
      pre.input.format = format;
      pre.dither_level = 3;
      pre.denoise_edge = 2;
      pre.temporal_strength = 80;
      pre.motion_smoothing = format % 2;
      ExpectStreamTakesNoMemory<vidproc::Pre>(pre);
      auto post = WithSizes<vidproc::PostOptions>(size.inWidth, size.inHeight, size.outWidth, size.outHeight);
      post.output.format = format;
      post.deblock_level = 40;
      post.filter = format % 2 == 0 ? VIDPROC_FILTER_AUTOMATIC : VIDPROC_FILTER_GAUSSIAN;
      if (format % 2 != 0) post.alignment = VIDPROC_ALIGNMENT_CORNERS;
      ExpectStreamTakesNoMemory<vidproc::Post>(post);
    }
  }
}

TEST(FramePath, PlanesAndWatchersTakeNoMemory) {
  void* handle = nullptr;
  VidProc420InterleavedInit(&handle, 34, 18, 17, 9);
  const Processor p(static_cast<VideoProcessor*>(handle));
  std::vector<std::uint8_t> source(34 * 27, 90), destination(18 * 14);
  ExpectNoAllocations([&] {
    VidProc420InterleavedExecute(handle, source.data(), source.data() + 34 * 18, destination.data(),
                                 destination.data() + 18 * 9, 34, 18, 34, 34, 17, 9, 18, 18, 64, 0);
  });
  vidproc::ExposureOptions options;
  options.input = {VIDPROC_FORMAT_NV12, 32, 32, VIDPROC_SITING_LEFT};
  vidproc::Exposure exposure(options);
  const TightFrame frame(options.input, 90);
  const vidproc_input input = frame.Read();
  ExpectNoAllocations([&] { exposure.Process(input); });
}

}  // namespace
