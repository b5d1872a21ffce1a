// The bounds of the proofs of exactness: a bank or setting that just passes and one that just fails, each run in both
// forms at every level. A bound that is too wide lets the faster form make other bytes from the one that fails. The
// frames for those of strengths, shifts and of deblocking's taps are drawn by the kernels' tests.
#include "plan/exactness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "plan/byte_row_layout.h"
#include "support/kernel_harness.h"

namespace {

using namespace testing_support;
using Bytes = std::vector<std::uint8_t>;
using Taps = std::vector<int>;

constexpr int kWidth = 98;
constexpr int kHeight = 40;

/// A processor for equal sizes, or for twice the width, whose frames are filtered.
Processor MakeFilter(bool preProcessor, int outWidth = kWidth) {
  Processor p = MakeProcessor(preProcessor, {{kWidth, kHeight, outWidth, kHeight}, 0, 1});
  p->SetAdaptive(8);
  return p;
}

template <std::size_t kRow>
void WritePhase(std::int16_t (&lanes)[16][kRow][8], int phase, const Taps& taps) {
  for (std::size_t tap = 0; tap < kRow; ++tap) {
    std::fill_n(lanes[phase][tap], 8, static_cast<std::int16_t>(tap < taps.size() ? taps[tap] : 0));
  }
}

/// Two frames of 0 and 255, the second half like the first, so that history weighs in.
Bytes Run(VideoProcessor& p, int (VideoProcessor::*kernel)()) {
  Random random(17);
  Bytes source(std::size_t{p.inStride} * p.inHeight), destination(std::size_t{p.outStride} * p.outHeight);
  p.temporalFirstFrame = 1;
  for (int frame = 0; frame < 2; ++frame) {
    for (std::uint8_t& sample : source) {
      if (frame == 0 || random.OneIn(2)) sample = random.OneIn(3) ? random.Byte() : random.OneIn(2) ? 255 : 0;
    }
    p.srcFrame = source.data();
    p.dstFrame = destination.data();
    (p.*kernel)();
  }
  return destination;
}

void ExpectFormsToAgree(VideoProcessor& p, int (VideoProcessor::*kernel)(), const std::string& what) {
  const auto runOn = [&](const KernelForms& forms) {
    const FormsInUse inUse(forms);
    return Run(p, kernel);
  };
  const Bytes expected = runOn({vidproc::Level::kScalar, true});
  for (const KernelForms& forms : AvailableForms())
    EXPECT_TRUE(runOn(forms) == expected) << forms.Name() << ", " << what;
}

vidproc::TapBank BankOf(const Taps& taps) {
  vidproc::TapBank bank{};
  bank.taps = static_cast<std::int32_t>(taps.size());
  bank.usedPhases = 1;
  std::copy(taps.begin(), taps.end(), bank.coefficient[0]);
  const auto isSet = [](int tap) { return tap != 0; };
  bank.firstTap[0] = static_cast<std::int32_t>(std::find_if(taps.begin(), taps.end(), isSet) - taps.begin());
  bank.tapCount[0] =
      static_cast<std::int32_t>(taps.rend() - std::find_if(taps.rbegin(), taps.rend(), isSet)) - bank.firstTap[0];
  return bank;
}

struct BankCase {
  const char* name;
  Taps vertical, horizontal;
  bool isExact;
  int precisionBits = 7;
};

const Taps kKeepRow = {0, 128, 0, 0};
const Taps kKeepColumn = {0, 0, 0, 128, 0, 0, 0, 0};
const Taps kKeepRow6 = {0, 64, 0, 0};
const Taps kKeepColumn6 = {0, 0, 0, 64, 0, 0, 0, 0};

// What the comparisons of forms rest on.
TEST(Forms, AreProvenUnlessOnlyGeneralOnesMayRun) {
  for (const bool generalOnly : {false, true}) {
    const FormsInUse inUse({vidproc::BestLevel(), generalOnly});
    EXPECT_EQ(vidproc::ChooseForm(true, true), generalOnly ? vidproc::Form::kGeneral : vidproc::Form::kProven);
    EXPECT_EQ(vidproc::ChooseForm(false, true), vidproc::Form::kGeneral);
    EXPECT_EQ(vidproc::ChooseForm(true, false), vidproc::Form::kGeneral);
  }
}

TEST(ByteRows, BanksAtTheBounds) {
  const BankCase kCases[] = {
      {"identity", kKeepRow, kKeepColumn, true},
      {"identity on other samples", {0, 0, 128, 0}, {0, 0, 0, 0, 0, 128, 0, 0}, true},
      {"identity on the outermost samples", {0, 0, 0, 128}, {0, 0, 0, 0, 0, 0, 0, 128}, true},
      {"rows add up to 128", {1, 127, 0, 0}, kKeepColumn, true},
      {"rows add up to 129", {2, 127, 0, 0}, kKeepColumn, false},
      {"a row's tap below 0", {-1, 127, 2, 0}, kKeepColumn, false},
      {"a row's tap of 128 beside others", {-1, 128, 1, 0}, kKeepColumn, false},
      {"columns of 128 above 0", kKeepRow, {0, 0, 0, 127, 1, 0, 0, 0}, true},
      {"columns of 129 above 0", kKeepRow, {0, 0, 0, 127, 2, 0, 0, 0}, false},
      {"columns of 128 below 0", kKeepRow, {0, 0, -128, 127, 1, 0, 0, 0}, true},
      {"columns of 129 below 0", kKeepRow, {0, -1, -128, 127, 1, 0, 0, 0}, false},
      {"a column's tap of -129", kKeepRow, {0, 0, -129, 127, 1, 0, 0, 0}, false},
      {"a column's tap of 128 beside others", kKeepRow, {0, 0, -1, 128, 0, 0, 0, 0}, false},
      {"6 bits: identity", kKeepRow6, kKeepColumn6, true, 6},
      {"6 bits: rows add up to 64", {1, 63, 0, 0}, kKeepColumn6, true, 6},
      {"6 bits: rows add up to 65", {2, 63, 0, 0}, kKeepColumn6, false, 6},
      {"6 bits: columns of 128 above 0", kKeepRow6, {0, 0, 0, 64, 64, 0, 0, 0}, true, 6},
      {"6 bits: columns of 129 above 0", kKeepRow6, {0, 0, 0, 65, 64, 0, 0, 0}, false, 6},
  };
  for (const BankCase& c : kCases) {
    EXPECT_EQ(vidproc::ByteRowsAreExact(BankOf(c.vertical), BankOf(c.horizontal), c.precisionBits), c.isExact)
        << c.name;
    const bool preProcessor = c.precisionBits == 7;
    const Processor p = MakeFilter(preProcessor);
    WritePhase(p->verticalFilterLanes, 0, c.vertical);
    WritePhase(p->horizontalFilterLanes, 0, c.horizontal);
    ExpectFormsToAgree(*p, preProcessor ? &VideoProcessor::PreProcExecute : &VideoProcessor::PostProcExecute, c.name);
  }
}

// At twice the width phases 0 and 8 are in use: each by itself is exact.
TEST(ByteRows, UnityAmongOtherPhases) {
  const struct {
    const char* name;
    Taps phase0, phase8;
    bool canBeLaidOut;
  } kCases[] = {
      {"one pair, unity first", kKeepColumn, {0, 0, 0, 64, 64, 0, 0, 0}, true},
      {"one pair, unity second", {0, 0, 0, 0, 128, 0, 0, 0}, {0, 0, 0, 64, 64, 0, 0, 0}, true},
      {"two pairs", kKeepColumn, {0, 0, 0, 64, 32, 32, 0, 0}, false},
      {"two pairs without unity", {0, 0, 1, 127, 0, 0, 0, 0}, {0, 0, 0, 64, 32, 32, 0, 0}, true},
      {"four pairs", {0, 0, 0, 127, 1, 0, 0, 0}, {-1, 2, -9, 62, 62, -9, 2, -1}, true},
  };
  const vidproc::PositionRule rule = vidproc::AlignCorners({2, 1});
  for (const auto& c : kCases) {
    vidproc::TapBank bank = BankOf(c.phase0);
    const vidproc::TapBank other = BankOf(c.phase8);
    bank.usedPhases |= 1u << 8;
    std::copy_n(other.coefficient[0], 16, bank.coefficient[8]);
    bank.firstTap[8] = other.firstTap[0];
    bank.tapCount[8] = other.tapCount[0];
    EXPECT_TRUE(vidproc::ByteRowsAreExact(BankOf(kKeepRow), bank, 7)) << c.name;
    EXPECT_EQ(vidproc::CanLayOutByteRows(bank, {rule, rule}), c.canBeLaidOut) << c.name;

    const Processor p = MakeFilter(true, 2 * kWidth);
    WritePhase(p->verticalFilterLanes, 0, kKeepRow);
    WritePhase(p->horizontalFilterLanes, 0, c.phase0);
    WritePhase(p->horizontalFilterLanes, 8, c.phase8);
    ExpectFormsToAgree(*p, &VideoProcessor::PreProcExecute, c.name);
  }
}

TEST(ByteRows, ShufflesReachTwoSamplesPerOutput) {
  const vidproc::TapBank bank = BankOf(kKeepColumn);
  const vidproc::PositionRule half = vidproc::AlignCorners({1, 2});
  EXPECT_TRUE(vidproc::CanLayOutByteRows(bank, {half, half}));
  const vidproc::PositionRule further = vidproc::AlignCorners({100, 201});
  EXPECT_FALSE(vidproc::CanLayOutByteRows(bank, {further, half}));
  EXPECT_FALSE(vidproc::CanLayOutByteRows(bank, {half, further}));
  for (const int outWidth : {49, 48, 2}) {
    const Processor p = MakeFilter(true, outWidth);
    ExpectFormsToAgree(*p, &VideoProcessor::PreProcExecute, "to " + std::to_string(outWidth));
  }
}

// tests/kernels/rows_test.cpp runs the row kernels on taps of both sides of this bound.
TEST(ByteProducts, TapsAtTheBounds) {
  const struct {
    std::vector<std::int16_t> taps;
    bool fit;
  } cases[] = {{{127, 1}, true},    {{127, 2}, false},      {{128}, false}, {{-128}, true},
               {{-128, -1}, false}, {{127, -128, 1}, true}, {{-129}, false}};
  for (const auto& [taps, fit] : cases) {
    EXPECT_EQ(vidproc::ByteProductsFitWords(taps.data(), static_cast<int>(taps.size())), fit) << taps[0];
  }
}

TEST(ByteColumns, BanksAtTheBounds) {
  // The centre taps are 1 and 3; what they say does not count.
  const BankCase kCases[] = {
      {"outer taps of 128", {64, 9, 64, 0}, {1, 0, 0, 9, 0, 0, 0, 127}, true},
      {"outer rows of 129", {64, 9, 65, 0}, kKeepColumn, false},
      {"outer columns of 129", kKeepRow, {2, 0, 0, 9, 0, 0, 0, 127}, false},
      {"an outer row of 128", {128, 0, 0, 0}, kKeepColumn, false},
      {"an outer column below 0", kKeepRow, {0, 0, -1, 128, 1, 0, 0, 0}, false},
      {"a centre of any value", {64, -3000, 64, 0}, {0, 0, 30, 20000, 30, 0, 0, 0}, true},
  };
  for (const BankCase& c : kCases) {
    EXPECT_EQ(vidproc::ByteColumnsAreExact(BankOf(c.vertical), BankOf(c.horizontal)), c.isExact) << c.name;
    for (const auto kernel :
         {&VideoProcessor::PreProcAdaptiveExecute, &VideoProcessor::PreProcAdaptiveMotionSmoothingExecute}) {
      const Processor p = MakeFilter(true);
      p->SetUseSpatialMotionSmoothing(1);
      WritePhase(p->verticalFilterLanes, 0, c.vertical);
      WritePhase(p->horizontalFilterLanes, 0, c.horizontal);
      ExpectFormsToAgree(*p, kernel, c.name);
    }
  }
}

TEST(AdaptiveTaps, BanksThatWeighTheirCoefficients) {
  const Taps keepRow = {0, 0, 0, 128, 0, 0, 0, 0};
  const Taps keepColumn = {0, 0, 0, 0, 0, 0, 0, 128, 0, 0, 0, 0, 0, 0, 0, 0};
  const BankCase kCases[] = {
      {"identity", keepRow, keepColumn, true},
      {"identity on other rows", {0, 0, 0, 0, 128, 0, 0, 0}, keepColumn, false},
      {"five rows", {0, 9, 20, 40, 40, 19, 0, 0}, keepColumn, true},
      {"eight rows, an outer one of 127", {0, 1, 0, 0, 127, 0, 0, 0}, keepColumn, true},
      {"rows of 127", {7, 9, 20, 40, 20, 19, 7, 5}, keepColumn, false},
      {"rows of 129", {7, 9, 20, 40, 20, 19, 7, 7}, keepColumn, false},
      {"all columns", keepRow, {2, -3, 5, -7, 11, -13, 17, 99, 23, -9, 5, -3, 2, -1, 1, -1}, true},
      {"an outer column of -128", keepRow, {0, 0, 0, 0, 0, 0, -128, 127, 127, 0, 0, 0, 2, 0, 0, 0}, true},
      {"an outer column of -129", keepRow, {0, 0, 0, 0, 0, 0, -129, 127, 127, 0, 0, 0, 3, 0, 0, 0}, false},
      {"columns of 127", keepRow, {0, 0, 0, 0, 0, 0, 5, 100, 20, 2, 0, 0, 0, 0, 0, 0}, false},
  };
  for (const BankCase& c : kCases) {
    EXPECT_EQ(vidproc::WeightsAreCoefficients(BankOf(c.vertical), BankOf(c.horizontal)), c.isExact) << c.name;
    const Processor p = MakeFilter(true);
    p->SetAdaptive(0);
    WritePhase(p->verticalFilterLanes, 0, c.vertical);
    WritePhase(p->horizontalFilterLanes, 0, c.horizontal);
    ExpectFormsToAgree(*p, &VideoProcessor::PreProcAdaptive16TapExecute, c.name);
  }
}

TEST(ByteColumns, SettingsAtTheBounds) {
  EXPECT_TRUE(vidproc::AdaptiveCurveFitsBytes(1) && vidproc::AdaptiveCurveFitsBytes(8));
  EXPECT_FALSE(vidproc::AdaptiveCurveFitsBytes(0) || vidproc::AdaptiveCurveFitsBytes(9));
  EXPECT_TRUE(vidproc::BlendFitsBytes(127, 7));
  EXPECT_FALSE(vidproc::BlendFitsBytes(128, 7) || vidproc::BlendFitsBytes(127, 8));
  EXPECT_TRUE(vidproc::TemporalTableIsExact(127));
  EXPECT_FALSE(vidproc::TemporalTableIsExact(128));
}

}  // namespace
