#include "swscale.h"

extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace {

// Rows apart enough for libswscale's wide reads and writes.
struct PaddedPlane {
  int stride;
  std::vector<std::uint8_t> bytes;

  PaddedPlane(int width, int height)
      : stride((width + 127) / 64 * 64), bytes(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height)) {}
  std::uint8_t* Row(int y) { return bytes.data() + static_cast<std::ptrdiff_t>(y) * stride; }
};

}  // namespace

Picture ScaleBySwscale(const Picture& in, int width, int height) {
  constexpr int kFlags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
  const std::unique_ptr<SwsContext, void (*)(SwsContext*)> scaler(
      sws_getContext(in.width, in.height, AV_PIX_FMT_GRAY8, width, height, AV_PIX_FMT_GRAY8, kFlags, nullptr, nullptr,
                     nullptr),
      sws_freeContext);
  if (!scaler) throw std::runtime_error("libswscale refuses the sizes");
  PaddedPlane source(in.width, in.height);
  for (int y = 0; y < in.height; ++y) std::copy_n(in.Row(y), in.width, source.Row(y));
  PaddedPlane scaled(width, height);
  // sws_scale reads four of each, whatever the format.
  const std::uint8_t* const sourcePlanes[4] = {source.Row(0)};
  std::uint8_t* const scaledPlanes[4] = {scaled.Row(0)};
  const int sourceStrides[4] = {source.stride}, scaledStrides[4] = {scaled.stride};
  sws_scale(scaler.get(), sourcePlanes, sourceStrides, 0, in.height, scaledPlanes, scaledStrides);
  Picture out(width, height);
  for (int y = 0; y < height; ++y) std::copy_n(scaled.Row(y), width, out.Row(y));
  return out;
}
