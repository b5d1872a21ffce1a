// SPDX-License-Identifier: GPL-2.0-or-later
#include "filter.h"

#include <algorithm>

namespace vidproc::obs {
namespace {

/// Nanoseconds from which on libobs, too, takes the distance of two frames for a jump.
constexpr std::uint64_t kLongestPause = 2'000'000'000;

constexpr struct {
  video_format source;
  vidproc_format frame;
  bool halvesChromaRows;
} kFormats[] = {{VIDEO_FORMAT_UYVY, VIDPROC_FORMAT_UYVY, false},
                {VIDEO_FORMAT_YUY2, VIDPROC_FORMAT_YUYV, false},
                {VIDEO_FORMAT_NV12, VIDPROC_FORMAT_NV12, true},
                {VIDEO_FORMAT_I420, VIDPROC_FORMAT_I420, true},
                {VIDEO_FORMAT_I422, VIDPROC_FORMAT_I422, false}};

/// vidproc_input or vidproc_output, which differ in constness only.
template <typename View>
View ViewOf(const obs_source_frame& frame, const FrameInfo& info, bool halvesChromaRows) {
  View view = {};
  view.format = info.format;
  view.width = info.width;
  view.height = info.height;
  for (int p = 0; p < 3; ++p) {
    const bool isHalved = p > 0 && halvesChromaRows;
    const std::uint32_t rows = isHalved ? frame.height / 2 + frame.height % 2 : frame.height;
    view.plane[p] = frame.data[p];
    view.stride[p] = frame.linesize[p];
    view.bytes[p] = std::size_t{frame.linesize[p]} * rows;
  }
  return view;
}

bool AreEqual(const FrameInfo& a, const FrameInfo& b) {
  return a.format == b.format && a.width == b.width && a.height == b.height;
}

}  // namespace

void Filter::Use(const PreOptions& options) {
  const std::lock_guard lock(mutex);
  settings = options;
  hasNewSettings = true;
}

bool Filter::Configure(const FrameInfo& info) {
  PreOptions options;
  {
    const std::lock_guard lock(mutex);
    hasNewSettings = false;
    options = settings;
  }
  options.input = options.output = info;
  try {
    pre.Configure(options);
    hasWork = !pre.PassesThrough();
    return true;
  } catch (const Error& error) {
    blog(LOG_WARNING, "[vidproc] %s", error.what());
    return false;
  }
}

void Filter::Follow(const FrameInfo& info) {
  const bool isSame = AreEqual(info, configured);
  if (isSame && !hasNewSettings) return;
  if (!Configure(info) && !isSame) hasWork = false;
  configured = info;
}

void Filter::Process(const obs_source_frame& frame) {
  const auto* const format = std::find_if(std::begin(kFormats), std::end(kFormats),
                                          [&](const auto& one) { return one.source == frame.format; });
  if (format == std::end(kFormats)) return;
  const FrameInfo info = {format->frame, static_cast<std::int32_t>(frame.width),
                          static_cast<std::int32_t>(frame.height), VIDPROC_SITING_LEFT};
  Follow(info);
  if (!hasWork) return;
  try {
    // Unsigned: a step back is a long one.
    if (frame.timestamp - lastTimestamp > kLongestPause) pre.Reset();
    lastTimestamp = frame.timestamp;
    pre.Process(ViewOf<Input>(frame, info, format->halvesChromaRows),
                ViewOf<Output>(frame, info, format->halvesChromaRows));
  } catch (const Error& error) {
    blog(LOG_WARNING, "[vidproc] %s", error.what());
    hasWork = false;
  }
}

}  // namespace vidproc::obs
