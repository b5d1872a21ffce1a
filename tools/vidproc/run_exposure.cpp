// exposure: the brightness watcher over a stream, as events, JSON lines and a chart.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "errors.h"
#include "file_io.h"
#include "frame_reader.h"
#include "library_frame.h"
#include "plot.h"
#include "progress.h"

namespace vidproc::tool {
namespace {

struct Sample {
  std::int64_t frame = 0;
  double seconds = 0;
  vidproc_exposure_event event = VIDPROC_EXPOSURE_NONE;
  double brightness = 0;
};

double MeanLuma(const AVFrame& frame) {
  const bool isUyvy = frame.format == AV_PIX_FMT_UYVY422;
  const bool isPacked = isUyvy || frame.format == AV_PIX_FMT_YUYV422;
  std::uint64_t sum = 0;
  for (int y = 0; y < frame.height; ++y) {
    const std::uint8_t* luma = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0] + (isUyvy ? 1 : 0);
    for (int x = 0; x < frame.width; ++x) sum += luma[isPacked ? 2 * x : x];
  }
  return static_cast<double>(sum) / (static_cast<double>(frame.width) * frame.height);
}

const char* EventName(vidproc_exposure_event event) {
  return event == VIDPROC_EXPOSURE_SETTLED ? "settled" : event == VIDPROC_EXPOSURE_DRIFTED ? "drifted" : "none";
}
drawing::Rgb EventColour(vidproc_exposure_event event) { return event == VIDPROC_EXPOSURE_SETTLED ? kGreen : kRed; }

vidproc::Exposure MakeWatcher(const StreamInfo& info) {
  vidproc::ExposureOptions options;
  options.input = InfoOf(info.format, info.size, info.colour.chromaLocation);
  try {
    return vidproc::Exposure(options);
  } catch (const vidproc::Error& error) {
    throw CannotRead(info.name, error.what());
  }
}

std::string JsonLine(const Sample& sample) {
  const nlohmann::ordered_json line = {{"frame", sample.frame},
                                       {"seconds", std::round(sample.seconds * 1e6) / 1e6},
                                       {"event", EventName(sample.event)},
                                       {"brightness", std::round(sample.brightness * 100) / 100}};
  return line.dump();
}

std::string EventLine(const Sample& sample) {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), "%9.3f s  frame %5lld  %s, brightness %.1f", sample.seconds,
                static_cast<long long>(sample.frame), EventName(sample.event), sample.brightness);
  return text.data();
}

drawing::Canvas PlotBrightness(const std::vector<Sample>& samples, const std::string& name) {
  const Size size{1200, 480};
  drawing::Canvas picture(size.width, size.height);
  drawing::SetColour(picture.Context(), kPaper);
  cairo_paint(picture.Context());
  const double end = std::max(samples.back().seconds, 0.1);
  const double step = NiceStep(end, 12);
  const Axis time{0, end, step, step < 0.1 ? 2 : step < 1 ? 1 : 0, "seconds"};
  const Axis luma{0, 255, 50, 0, "mean luma"};
  Chart chart(picture.Context(), {0, 0}, size, "Brightness of " + name, time, luma);
  std::vector<drawing::Point> curve;
  curve.reserve(samples.size());
  for (const Sample& sample : samples) curve.push_back({sample.seconds, sample.brightness});
  for (const Sample& sample : samples) {
    if (sample.event != VIDPROC_EXPOSURE_NONE) chart.VerticalLine(sample.seconds, EventColour(sample.event));
  }
  chart.Curve(curve, kBlue, 2.5);
  int events = 0;  // neighbours stand on different lines
  for (const Sample& sample : samples) {
    if (sample.event == VIDPROC_EXPOSURE_NONE) continue;
    chart.Label(sample.seconds, EventColour(sample.event), EventName(sample.event), events++ % 3);
  }
  return picture;
}

}  // namespace

void RunExposure(const Options& options) {
  FrameReader reader(options.input, kLibraryFormats);
  const StreamInfo& info = reader.Info();
  vidproc::Exposure watcher = MakeWatcher(info);
  std::optional<OutputFile> plot;
  if (!options.plotPath.empty()) plot.emplace(options.plotPath);

  std::vector<Sample> samples;
  Progress progress(info.frameCount, options.quiet);
  bool hasEvents = false;
  while (const FramePtr frame = reader.Read()) {
    const Sample sample{progress.Frames(), static_cast<double>(frame->pts) * av_q2d(info.timeBase),
                        watcher.Process(InputOf(*frame, {0, 0, info.size})), MeanLuma(*frame)};
    const bool isEvent = sample.event != VIDPROC_EXPOSURE_NONE;
    hasEvents = hasEvents || isEvent;
    if (isEvent || options.json) {
      progress.Clear();
      PrintLine(options.json ? JsonLine(sample) : EventLine(sample));
    }
    if (plot) samples.push_back(sample);
    progress.FrameDone();
  }
  progress.Clear();
  if (!options.json && !hasEvents) PrintLine("no event in " + std::to_string(progress.Frames()) + " frames");
  if (plot) {
    plot->Write(drawing::Png(PlotBrightness(samples, info.name)));
    plot->Commit();
  }
}

}  // namespace vidproc::tool
