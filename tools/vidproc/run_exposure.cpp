// exposure: the brightness watcher over a stream, as events, JSON lines and a chart.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "errors.h"
#include "file_io.h"
#include "frame_reader.h"
#include "image.h"
#include "plot.h"
#include "progress.h"
#include "vidproc/video_processor.h"

namespace vidproc::tool {
namespace {

constexpr int kSettled = 0;

struct Sample {
  std::int64_t frame = 0;
  double seconds = 0;
  int result = -1;
  double brightness = 0;
};

class Watcher {
 public:
  explicit Watcher(Size size) {
    VidProcAdjustAutoExposureInit(&handle, size.width, size.height, 0);
    if (handle == nullptr) throw ToolError(kFailure, "the library refused to watch frames of " + ToString(size));
  }
  ~Watcher() { VidProcAdjustAutoExposureCleanup(&handle); }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  int Watch(Picture& picture) { return VidProcAdjustAutoExposure(handle, picture.bytes.data()); }

 private:
  void* handle = nullptr;
};

double MeanLuma(const Picture& picture) {
  std::uint64_t sum = 0;
  for (std::size_t i = 1; i < picture.bytes.size(); i += 2) sum += picture.bytes[i];
  return static_cast<double>(sum) / static_cast<double>(picture.LumaBytes());
}

const char* EventName(int result) { return result == kSettled ? "settled" : "drifted"; }
drawing::Rgb EventColour(int result) { return result == kSettled ? kGreen : kRed; }

std::string JsonLine(const Sample& sample) {
  const nlohmann::ordered_json line = {{"frame", sample.frame},
                                       {"seconds", std::round(sample.seconds * 1e6) / 1e6},
                                       {"result", sample.result},
                                       {"brightness", std::round(sample.brightness * 100) / 100}};
  return line.dump();
}

std::string EventLine(const Sample& sample) {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), "%9.3f s  frame %5lld  %s, brightness %.1f", sample.seconds,
                static_cast<long long>(sample.frame), EventName(sample.result), sample.brightness);
  return text.data();
}

drawing::Canvas PlotBrightness(const std::vector<Sample>& samples, const std::string& name) {
  const Size size{1200, 480};
  drawing::Canvas picture(size.width, size.height);
  drawing::SetColour(picture.Context(), kPaper);
  cairo_paint(picture.Context());
  const double end = std::max(samples.back().seconds, 0.1);
  const double step = NiceStep(end, 12);
  const Axis time{0, end, step, step < 1 ? 1 : 0, "seconds"};
  const Axis luma{0, 255, 50, 0, "mean luma"};
  Chart chart(picture.Context(), {0, 0}, size, "Brightness of " + name, time, luma);
  std::vector<drawing::Point> curve;
  curve.reserve(samples.size());
  for (const Sample& sample : samples) curve.push_back({sample.seconds, sample.brightness});
  for (const Sample& sample : samples) {
    if (sample.result >= 0) chart.VerticalLine(sample.seconds, EventColour(sample.result));
  }
  chart.Curve(curve, kBlue, 2.5);
  int events = 0;  // neighbours stand on different lines
  for (const Sample& sample : samples) {
    if (sample.result < 0) continue;
    chart.Label(sample.seconds, EventColour(sample.result), EventName(sample.result), events++ % 3);
  }
  return picture;
}

}  // namespace

void RunExposure(const Options& options) {
  FrameReader reader(options.input, Layout::kUyvy);
  const StreamInfo& info = reader.Info();
  Watcher watcher(info.size);
  std::optional<OutputFile> plot;
  if (!options.plotPath.empty()) plot.emplace(options.plotPath);

  std::vector<Sample> samples;
  Picture picture;
  Progress progress(info.frameCount);
  int events = 0;
  while (reader.Read(picture)) {
    CheckInterrupted();
    const Sample sample{progress.Frames(), static_cast<double>(picture.pts) * av_q2d(info.timeBase),
                        watcher.Watch(picture), MeanLuma(picture)};
    const bool event = sample.result >= 0;
    if (event || options.json) {
      progress.Clear();
      PrintLine(options.json ? JsonLine(sample) : EventLine(sample));
    }
    events += event ? 1 : 0;
    if (plot) samples.push_back(sample);
    progress.FrameDone();
  }
  progress.Clear();
  if (!options.json && events == 0) {
    PrintLine("no event in " + std::to_string(progress.Frames()) + " frames");
  }
  if (plot) {
    WritePng(*plot, PlotBrightness(samples, info.name));
    plot->Commit();
  }
}

}  // namespace vidproc::tool
