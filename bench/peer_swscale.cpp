// libswscale: packed frames in and out, NV12 and I420.
extern "C" {
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <memory>

#include "contest.h"

namespace bench {
namespace {

void Enter(const Contest& contest, const char* contestant, int flags) {
  Enter(contest, contestant, [=]() -> Run {
    constexpr AVPixelFormat kFormats[] = {AV_PIX_FMT_UYVY422, AV_PIX_FMT_NV12, AV_PIX_FMT_YUV420P};
    const AVPixelFormat format = kFormats[static_cast<int>(contest.format)];
    const Size in = contest.in, out = contest.out;
    const std::shared_ptr<SwsContext> context(
        sws_getContext(in.width, in.height, format, out.width, out.height, format, flags, nullptr, nullptr, nullptr),
        sws_freeContext);
    if (context == nullptr) return {};
    return [=](const std::uint8_t* source, std::uint8_t* destination) {
      std::uint8_t *sources[4], *destinations[4];
      int sourceStrides[4], destinationStrides[4];
      av_image_fill_arrays(sources, sourceStrides, source, format, in.width, in.height, 1);
      av_image_fill_arrays(destinations, destinationStrides, destination, format, out.width, out.height, 1);
      sws_scale(context.get(), sources, sourceStrides, 0, in.height, destinations, destinationStrides);
    };
  });
}

const bool kEntered = [] {
  for (const int soften : {10, 0}) {
    for (const Contest& contest : ScaleContests(soften)) Enter(contest, "swscale-bicubic", SWS_BICUBIC);
  }
  for (const Contest& contest : MemoryContests()) Enter(contest, "swscale-bicubic", SWS_BICUBIC);
  for (const Contest& contest : PostScaleContests()) Enter(contest, "swscale-lanczos", SWS_LANCZOS);
  for (const Contest& contest : {Nv12Contest(), AutomaticNv12Contest()}) Enter(contest, "swscale-bicubic", SWS_BICUBIC);
  for (const Contest& contest : AutomaticContests(8)) Enter(contest, "swscale-bicubic", SWS_BICUBIC);
  for (const Contest& contest : AutomaticContests(16)) Enter(contest, "swscale-lanczos", SWS_LANCZOS);
  Enter(PostAutomaticContest(), "swscale-lanczos", SWS_LANCZOS);
  return true;
}();

}  // namespace
}  // namespace bench
