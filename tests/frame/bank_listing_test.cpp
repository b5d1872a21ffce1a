// Debug listings on standard output: the exact text of every kernel, and in which frames it appears.
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/kernel_harness.h"
#include "vidproc/video_processor.h"

namespace {

using Kernel = int (VideoProcessor::*)();

template <typename Bank>
std::string Phases(const Bank& bank, int taps) {
  std::ostringstream text;
  for (int phase = 0; phase < 16; ++phase) {
    int total = 0;
    text << std::setw(3) << phase << ':';
    for (int tap = 0; tap < taps; ++tap) {
      text << std::setw(5) << bank[phase][tap];
      total += bank[phase][tap];
    }
    text << "\t total " << total << " \n";
  }
  return text.str();
}

class Listing : public testing::Test {
 protected:
  static constexpr int kWidth = 64;
  static constexpr int kHeight = 32;

  /// 64 x 32 to 96 x 16, or to the same size.
  void Configure(bool preProcessor, bool equalSizes = false) {
    testing_support::Configuration configuration{
        {kWidth, kHeight, equalSizes ? kWidth : 96, equalSizes ? kHeight : 16}};
    configuration.windowKind = preProcessor ? 2 : 0;
    configuration.use16Taps = preProcessor;
    p = testing_support::MakeProcessor(preProcessor, configuration);
    p->adaptive = 1;
    p->SetUseSpatialMotionSmoothing(1);
    p->srcFrame = source.data();
    p->dstFrame = destination.data();
    p->PrintFilters(1);
  }

  std::string Run(Kernel kernel) {
    testing::internal::CaptureStdout();
    (*p.*kernel)();
    return testing::internal::GetCapturedStdout();
  }

  std::string Scaler(const std::string& owner) const {
    return owner + "Horizontal filter: up 3 down 2\n" + Phases(p->horizontalFilter, 8) + "\n" + owner +
           "Vertical filter: up 1 down 2\n" + Phases(p->verticalFilter, 4) + "\n";
  }

  std::string Deblocking() const {
    return "Deblock Horizontal filter\n" + Phases(p->deblockHorizontalFilter, 8) + "\nDeblock Vertical filter\n" +
           Phases(p->deblockVerticalFilter, 8) + "\n";
  }

  std::vector<unsigned char> source = std::vector<unsigned char>(std::size_t{2} * kWidth * kHeight, 100);
  std::vector<unsigned char> destination = std::vector<unsigned char>(std::size_t{2} * 96 * kHeight);
  testing_support::Processor p;
};

TEST_F(Listing, PreProcessorListsItsBanksOnEveryFrame) {
  Configure(true);
  const std::string both = Scaler("PreProc ");
  const std::string firstPhases =
      "PreProc 16 tap Horizontal filter\n"
      "    0    0    0    0    0    0    0  128    0    0    0    0    0    0    0    0\n"
      "\nPreProc 8 tap Vertical filter\n"
      "    0    0    0  128    0    0    0    0\n"
      "\n";
  for (const auto& [kernel, expected] : {std::pair{&VideoProcessor::PreProcExecute, both},
                                         {&VideoProcessor::PreProcExecute, both},
                                         {&VideoProcessor::PreProcExecute_SSE2, both},
                                         {&VideoProcessor::PreProcAdaptiveExecute, both},
                                         {&VideoProcessor::PreProcAdaptiveMotionSmoothingExecute, both},
                                         {&VideoProcessor::PreProcAdaptive16TapTemporalExecute, firstPhases},
                                         {&VideoProcessor::PreProcAdaptive16TapExecute, firstPhases}}) {
    EXPECT_EQ(Run(kernel), expected);
  }
  p->PrintFilters(0);
  EXPECT_EQ(Run(&VideoProcessor::PreProcExecute), "");
}

TEST_F(Listing, PostProcessorListsDeblockingFirst) {
  Configure(false);
  EXPECT_EQ(Run(&VideoProcessor::PostProcExecute), Scaler(""));
  EXPECT_EQ(Run(&VideoProcessor::PostProcExecute_SSE2), Scaler(""));
  p->InitDeblocker(21);
  EXPECT_EQ(Run(&VideoProcessor::Deblock8x8), Deblocking()) << "listed even where the sizes keep it from running";
  EXPECT_EQ(Run(&VideoProcessor::PostProcExecute), Deblocking() + Scaler(""));
  Configure(false, true);
  EXPECT_EQ(Run(&VideoProcessor::PostProcExecute), "") << "passed through";
  p->InitDeblocker(21);
  EXPECT_EQ(Run(&VideoProcessor::PostProcExecute), Deblocking());
}

TEST_F(Listing, NothingIsListedWhereNoKernelRuns) {
  Configure(true);
  p->dstFrame = nullptr;
  EXPECT_EQ(Run(&VideoProcessor::PreProcExecute), "");
  p->dstFrame = destination.data();
  p->inHeight = 4000;  // more than the buffers hold
  EXPECT_EQ(Run(&VideoProcessor::PreProcExecute), "");
  p->outWidth = p->inWidth;
  p->inHeight = p->outHeight = 0;
  EXPECT_EQ(Run(&VideoProcessor::Deblock8x8), "");
}

}  // namespace
