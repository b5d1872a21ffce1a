// libswscale: packed frames in and out, and NV12.
extern "C" {
#include <libswscale/swscale.h>
}

#include <memory>

#include "contest.h"

namespace bench {
namespace {

void Enter(const Contest& contest, const char* contestant, int flags) {
  Enter(contest, contestant, [=]() -> Run {
    const bool isNv12 = contest.format == Format::kNv12;
    const AVPixelFormat format = isNv12 ? AV_PIX_FMT_NV12 : AV_PIX_FMT_UYVY422;
    const Size in = contest.in, out = contest.out;
    const std::shared_ptr<SwsContext> context(
        sws_getContext(in.width, in.height, format, out.width, out.height, format, flags, nullptr, nullptr, nullptr),
        sws_freeContext);
    if (context == nullptr) return {};
    return [=](const std::uint8_t* source, std::uint8_t* destination) {
      const int bytesPerPixel = isNv12 ? 1 : 2;
      const std::uint8_t* const sources[4] = {source, source + in.width * in.height};
      std::uint8_t* const destinations[4] = {destination, destination + out.width * out.height};
      const int sourceStrides[4] = {bytesPerPixel * in.width, in.width};
      const int destinationStrides[4] = {bytesPerPixel * out.width, out.width};
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
  Enter(Nv12Contest(), "swscale-bicubic", SWS_BICUBIC);
  return true;
}();

}  // namespace
}  // namespace bench
