// libavfilter: one filter graph per contestant, on one thread.
#include <cstdint>  // FFmpeg's headers ask for it to come first
extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/log.h>
}

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "contest.h"
#include "planar_frame.h"

namespace bench {
namespace {

class Graph {
 public:
  Graph(const Contest& contest, const std::string& filters) {
    for (int i = 0; i < contest.frames; ++i) frames.push_back(MakePlanarFrame(contest.format, contest.in, i));
    graph->nb_threads = 1;
    const std::string format = contest.format == Format::kPacked422 ? "yuv422p" : "yuv420p";
    const std::string arguments = "video_size=" + std::to_string(contest.in.width) + "x" +
                                  std::to_string(contest.in.height) + ":pix_fmt=" + format + ":time_base=1/30";
    const auto create = [this](AVFilterContext** filter, const char* name, const char* options) {
      return avfilter_graph_create_filter(filter, avfilter_get_by_name(name), name, options, nullptr, graph.get()) >= 0;
    };
    if (!create(&source, "buffer", arguments.c_str()) || !create(&sink, "buffersink", nullptr)) return;
    AVFilterInOut* begin = avfilter_inout_alloc();
    AVFilterInOut* end = avfilter_inout_alloc();
    *begin = {av_strdup("in"), source, 0, nullptr};
    *end = {av_strdup("out"), sink, 0, nullptr};
    // Both ends must keep the frames' format, or a conversion would be timed.
    const std::string chain = "[in]" + filters + ",format=" + format + "[out]";
    isReady = avfilter_graph_parse_ptr(graph.get(), chain.c_str(), &end, &begin, nullptr) >= 0 &&
              avfilter_graph_config(graph.get(), nullptr) >= 0;
    avfilter_inout_free(&begin);
    avfilter_inout_free(&end);
  }

  bool IsReady() const { return isReady; }

  /// The next frame goes in; what is ready comes out. Filters that look ahead lag behind, at one frame per frame.
  void Filter() {
    AVFrame* frame = frames[static_cast<std::size_t>(count % static_cast<int>(frames.size()))].get();
    frame->pts = count++;
    if (av_buffersrc_add_frame_flags(source, frame, AV_BUFFERSRC_FLAG_KEEP_REF) < 0) std::abort();
    while (av_buffersink_get_frame(sink, result.get()) >= 0) av_frame_unref(result.get());
  }

  /// The frame goes in for good and comes back, so that a filter may work in place.
  void FilterInPlace() {
    frames[0]->pts = count++;
    if (av_buffersrc_add_frame_flags(source, frames[0].get(), 0) < 0) std::abort();
    if (av_buffersink_get_frame(sink, frames[0].get()) < 0) std::abort();
  }

 private:
  struct FreeGraph {
    void operator()(AVFilterGraph* owned) const { avfilter_graph_free(&owned); }
  };
  std::unique_ptr<AVFilterGraph, FreeGraph> graph{avfilter_graph_alloc()};
  AVFilterContext* source = nullptr;
  AVFilterContext* sink = nullptr;
  std::vector<PlanarFrame> frames;
  PlanarFrame result{av_frame_alloc()};
  int count = 0;
  bool isReady = false;
};

void Enter(Contest contest, const std::string& contestant, const std::string& filters) {
  contest.writes = false;  // it has frames of its own
  Enter(contest, "avfilter-" + contestant, [=]() -> Run {
    const auto graph = std::make_shared<Graph>(contest, filters);
    if (!graph->IsReady()) return {};
    if (contest.inPlace) return [=](const std::uint8_t*, std::uint8_t*) { graph->FilterInPlace(); };
    return [=](const std::uint8_t*, std::uint8_t*) { graph->Filter(); };
  });
}

const bool kEntered = [] {
  av_log_set_level(AV_LOG_ERROR);
  for (const Contest& contest : TemporalContests()) {
    Enter(contest, "atadenoise", "atadenoise");
    Enter(contest, "hqdn3d", "hqdn3d");
  }
  for (const Contest& contest : AdaptiveContests("adaptive")) {
    const std::string size = std::to_string(contest.out.width) + ":" + std::to_string(contest.out.height);
    Enter(contest, "smartblur+scale", "smartblur,scale=" + size + ":flags=bicubic");
  }
  Enter(NoiseContest(), "noise", "noise=c0s=8:c0f=t");
  for (const int taps : {8, 16}) {
    Enter(DenoiseContest(taps), "hqdn3d", "hqdn3d");
    Enter(DenoiseContest(taps), "atadenoise", "atadenoise");
  }
  Enter(DenoiseAndScaleContest(), "hqdn3d+scale", "hqdn3d,scale=640:360:flags=bicubic");
  return true;
}();

}  // namespace
}  // namespace bench
