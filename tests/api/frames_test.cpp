// Frames of the checked interface: which are refused, with which text, leaving the output untouched; which planes may
// lie in each other; and frames over one block of memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/api_frames.h"
#include "vidproc/vidproc.hpp"

namespace {

using namespace testing_support;

constexpr std::ptrdiff_t kLongest = PTRDIFF_MAX;

struct Frames {
  vidproc_input input;
  vidproc_output output;
};

struct Refusal {
  void (*spoil)(Frames&);
  vidproc_status status;
  const char* text;
};

// I420 64 x 35 to NV12 32 x 17, all of it tight.
const Refusal kRefusals[] = {
    {[](Frames& f) { f.input.format = VIDPROC_FORMAT_I422; }, VIDPROC_ERROR_FRAME_MISMATCH,
     "input.format is 5, configured is 4"},
    {[](Frames& f) { f.input.width = 66; }, VIDPROC_ERROR_FRAME_MISMATCH, "input.width is 66, configured is 64"},
    {[](Frames& f) { f.input.height = -35; }, VIDPROC_ERROR_FRAME_MISMATCH, "input.height is -35, configured is 35"},
    {[](Frames& f) { f.output.height = 18; }, VIDPROC_ERROR_FRAME_MISMATCH, "output.height is 18, configured is 17"},
    {[](Frames& f) { f.input.plane[2] = nullptr; }, VIDPROC_ERROR_INVALID_ARGUMENT,
     "input.plane[2] is null, allowed is memory of the frame"},
    {[](Frames& f) { f.output.plane[0] = nullptr; }, VIDPROC_ERROR_INVALID_ARGUMENT,
     "output.plane[0] is null, allowed is memory of the frame"},
    {[](Frames& f) { f.input.stride[0] = 63; }, VIDPROC_ERROR_BUFFER_TOO_SMALL,
     "input.stride[0] is 63, allowed 64 or more, or -64 or less"},
    {[](Frames& f) { f.input.stride[1] = -31; }, VIDPROC_ERROR_BUFFER_TOO_SMALL,
     "input.stride[1] is -31, allowed 32 or more, or -32 or less"},
    {[](Frames& f) { f.output.stride[1] = 0; }, VIDPROC_ERROR_BUFFER_TOO_SMALL,
     "output.stride[1] is 0, allowed 32 or more, or -32 or less"},
    {[](Frames& f) { f.input.stride[0] = 63161282; }, VIDPROC_ERROR_INVALID_ARGUMENT,
     "input.stride[0] is 63161282, allowed up to 63161281 bytes between rows"},
    {[](Frames& f) { f.input.stride[0] = kLongest, f.input.bytes[0] = SIZE_MAX; }, VIDPROC_ERROR_INVALID_ARGUMENT,
     ", allowed up to 63161281 bytes between rows"},
    {[](Frames& f) { f.input.stride[0] = -kLongest - 1, f.input.bytes[0] = SIZE_MAX; }, VIDPROC_ERROR_INVALID_ARGUMENT,
     "allowed up to 63161281 bytes between rows"},
    {[](Frames& f) { --f.input.bytes[0]; }, VIDPROC_ERROR_BUFFER_TOO_SMALL,
     "input.bytes[0] is 2239, allowed 2240 or more"},
    {[](Frames& f) { f.input.stride[2] = 40; }, VIDPROC_ERROR_BUFFER_TOO_SMALL,
     "input.bytes[2] is 576, allowed 712 or more"},
    {[](Frames& f) { f.output.bytes[1] = 0; }, VIDPROC_ERROR_BUFFER_TOO_SMALL,
     "output.bytes[1] is 0, allowed 288 or more"},
    {[](Frames& f) { f.output.plane[1] = f.output.plane[0] + f.output.bytes[0] - 1; }, VIDPROC_ERROR_OVERLAP,
     "output.plane[0] shares bytes with output.plane[1], allowed are none"},
    {[](Frames& f) { f.input.plane[1] = f.output.plane[0] + f.output.bytes[0] - 1; }, VIDPROC_ERROR_OVERLAP,
     "output.plane[0] shares bytes with input.plane[1], allowed are none or the very same frame"},
    {[](Frames& f) { f.input.plane[2] = f.output.plane[1] + f.output.bytes[1] - 1; }, VIDPROC_ERROR_OVERLAP,
     "output.plane[1] shares bytes with input.plane[2], allowed are none or the very same frame"},
};

TEST(Frames, MistakesAreNamedAndTouchNothing) {
  const auto options = WithSizes<vidproc::PreOptions>(64, 35, 32, 17);
  vidproc::Pre pre(options);
  // One block, so that frames may be laid over each other's ends.
  std::vector<std::uint8_t> memory(16384, 7);
  const Frames good = {vidproc::InputOver(options.input, {memory.data(), 8192}),
                       vidproc::OutputOver(options.output, {memory.data() + 8192, 8192})};
  for (const Refusal& refusal : kRefusals) {
    Frames frames = good;
    refusal.spoil(frames);
    EXPECT_EQ(vidproc_pre_process(pre.Get(), &frames.input, &frames.output), refusal.status) << refusal.text;
    const std::string text = vidproc_pre_last_error(pre.Get());
    EXPECT_NE(text.find(refusal.text), std::string::npos) << text << "\nexpected " << refusal.text;
  }
  EXPECT_EQ(vidproc_pre_process(pre.Get(), nullptr, &good.output), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(vidproc_pre_last_error(pre.Get()), "input is null, allowed is a frame");
  EXPECT_EQ(vidproc_pre_process(pre.Get(), &good.input, nullptr), VIDPROC_ERROR_INVALID_ARGUMENT);
  EXPECT_STREQ(vidproc_pre_last_error(pre.Get()), "output is null, allowed is a frame");
  EXPECT_EQ(memory, std::vector<std::uint8_t>(memory.size(), 7));
  EXPECT_EQ(vidproc_pre_process(pre.Get(), &good.input, &good.output), VIDPROC_OK);
  EXPECT_STREQ(vidproc_pre_last_error(pre.Get()), "");
}

/// A packed frame of 16 x 8 pixels somewhere in a block, to one of the same format and size.
struct Placement {
  const char* name;
  std::ptrdiff_t input, inStride, output, outStride;
  bool isAllowed;
};

constexpr std::ptrdiff_t kRow = 32;
const Placement kPlacements[] = {
    {"the very same frame", 0, kRow, 0, kRow, true},
    {"the very same frame, bottom-up", 7 * kRow, -kRow, 7 * kRow, -kRow, true},
    {"one upside down on the other", 0, kRow, 7 * kRow, -kRow, false},
    {"the same start, other strides", 0, kRow, 0, 2 * kRow, false},
    {"one behind the other", 0, kRow, 8 * kRow, kRow, true},
    {"the last byte shared", 0, kRow, 8 * kRow - 1, kRow, false},
    {"the first byte shared", 8 * kRow - 1, kRow, 0, kRow, false},
    {"left and right half of a picture", 0, 2 * kRow, kRow, 2 * kRow, true},
    {"right and left half of a picture", kRow, 2 * kRow, 0, 2 * kRow, true},
    {"the right half, some rows lower and bottom-up", 0, 2 * kRow, 15 * kRow + 6 * kRow, -2 * kRow, true},
    {"halves that share a column", 0, 2 * kRow, kRow - 1, 2 * kRow, false},
    {"halves of which the second reaches into the next row", 0, 2 * kRow, kRow + 1, 2 * kRow, false},
    {"interleaved rows of different strides", 0, 2 * kRow, kRow, 4 * kRow, false},
};

TEST(Frames, ShareAllBytesOrNone) {
  vidproc::PreOptions options;
  options.input = options.output = {VIDPROC_FORMAT_UYVY, 16, 8, VIDPROC_SITING_LEFT};
  vidproc::Pre pre(options);
  std::vector<std::uint8_t> memory(64 * kRow, 7);
  const std::size_t enough = memory.size();
  for (const Placement& p : kPlacements) {
    const vidproc_input input = {VIDPROC_FORMAT_UYVY, 16, 8, {memory.data() + p.input}, {p.inStride}, {enough}};
    const vidproc_output output = {VIDPROC_FORMAT_UYVY, 16, 8, {memory.data() + p.output}, {p.outStride}, {enough}};
    EXPECT_EQ(vidproc_pre_process(pre.Get(), &input, &output), p.isAllowed ? VIDPROC_OK : VIDPROC_ERROR_OVERLAP)
        << p.name;
  }
  // Equal places, other formats.
  options.output.format = VIDPROC_FORMAT_YUYV;
  pre.Configure(options);
  const vidproc_input input = vidproc::InputOver(options.input, memory);
  const vidproc_output output = vidproc::OutputOver(options.output, memory);
  EXPECT_EQ(vidproc_pre_process(pre.Get(), &input, &output), VIDPROC_ERROR_OVERLAP);
}

/// Tight planes in bytes, for a size of which both sides are odd.
TEST(Frames, FollowOneAnotherInABlock) {
  struct Layout {
    vidproc_format format;
    std::vector<std::size_t> strides, rows;
  };
  const Layout layouts[] = {{VIDPROC_FORMAT_UYVY, {16}, {5}},
                            {VIDPROC_FORMAT_YUYV, {16}, {5}},
                            {VIDPROC_FORMAT_NV12, {7, 8}, {5, 3}},
                            {VIDPROC_FORMAT_I420, {7, 4, 4}, {5, 3, 3}},
                            {VIDPROC_FORMAT_I422, {7, 4, 4}, {5, 5, 5}}};
  for (const Layout& layout : layouts) {
    const vidproc_frame_info info = {layout.format, 7, 5, VIDPROC_SITING_LEFT};
    std::vector<std::uint8_t> memory(vidproc::FrameBytes(info));
    const vidproc_output frame = vidproc::OutputOver(info, memory);
    std::size_t used = 0;
    for (std::size_t p = 0; p < layout.strides.size(); ++p) {
      EXPECT_EQ(frame.plane[p], memory.data() + used) << layout.format;
      EXPECT_EQ(static_cast<std::size_t>(frame.stride[p]), layout.strides[p]) << layout.format;
      used += layout.strides[p] * layout.rows[p];
    }
    EXPECT_EQ(memory.size(), used) << layout.format;
    vidproc_output untouched = frame;
    EXPECT_EQ(vidproc_output_map(&untouched, &info, memory.data(), used - 1), VIDPROC_ERROR_BUFFER_TOO_SMALL);
    EXPECT_EQ(vidproc_output_map(&untouched, &info, nullptr, used), VIDPROC_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vidproc_output_map(&untouched, nullptr, memory.data(), used), VIDPROC_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(untouched.plane[0], frame.plane[0]);
    EXPECT_EQ(vidproc_output_map(nullptr, &info, memory.data(), used), VIDPROC_ERROR_INVALID_ARGUMENT);
  }
  const vidproc_frame_info bad[] = {{},
                                    {6, 8, 8, 0},
                                    {VIDPROC_FORMAT_NV12, 1, 8, 0},
                                    {VIDPROC_FORMAT_NV12, 8, 16385, 0},
                                    {VIDPROC_FORMAT_NV12, 8, 8, 2}};
  for (const vidproc_frame_info& info : bad) EXPECT_EQ(vidproc_frame_bytes(&info), 0u);
  EXPECT_EQ(vidproc_frame_bytes(nullptr), 0u);
}

}  // namespace
