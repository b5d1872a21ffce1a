// libyuv: packed frames through its conversions to planes and back, and NV12. kFilterLinear is its cheapest filter
// (one row in, no vertical taps), kFilterBilinear the next, kFilterBox the mean of what an output covers; it has no
// bicubic one. Planar and NV12 frames go in as they are.
#include <libyuv.h>

#include <memory>

#include "contest.h"

namespace bench {
namespace {

struct Planes {
  Size size;
  Bytes luma, cb, cr;
  explicit Planes(Size frame) : size(frame), luma(Count(frame)), cb(Count(frame) / 2), cr(Count(frame) / 2) {}
  static std::size_t Count(Size frame) {
    return static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height);
  }
};

Run ScalePacked(const Contest& contest, libyuv::FilterMode filter) {
  struct Both {
    Planes in, out;
  };
  const auto planes = std::make_shared<Both>(Both{Planes(contest.in), Planes(contest.out)});
  return [=](const std::uint8_t* source, std::uint8_t* destination) {
    auto& [in, out] = *planes;
    const int inWidth = in.size.width, outWidth = out.size.width;
    libyuv::UYVYToI422(source, 2 * inWidth, in.luma.data(), inWidth, in.cb.data(), inWidth / 2, in.cr.data(),
                       inWidth / 2, inWidth, in.size.height);
    libyuv::I422Scale(in.luma.data(), inWidth, in.cb.data(), inWidth / 2, in.cr.data(), inWidth / 2, inWidth,
                      in.size.height, out.luma.data(), outWidth, out.cb.data(), outWidth / 2, out.cr.data(),
                      outWidth / 2, outWidth, out.size.height, filter);
    libyuv::I422ToUYVY(out.luma.data(), outWidth, out.cb.data(), outWidth / 2, out.cr.data(), outWidth / 2, destination,
                       2 * outWidth, outWidth, out.size.height);
  };
}

Run ScaleNv12(const Contest& contest, libyuv::FilterMode filter) {
  return [in = contest.in, out = contest.out, filter](const std::uint8_t* source, std::uint8_t* destination) {
    libyuv::NV12Scale(source, in.width, source + in.width * in.height, in.width, in.width, in.height, destination,
                      out.width, destination + out.width * out.height, out.width, out.width, out.height, filter);
  };
}

Run ScaleI420(const Contest& contest, libyuv::FilterMode filter) {
  return [in = contest.in, out = contest.out, filter](const std::uint8_t* source, std::uint8_t* destination) {
    const int inLuma = in.width * in.height, outLuma = out.width * out.height;
    libyuv::I420Scale(source, in.width, source + inLuma, in.width / 2, source + inLuma * 5 / 4, in.width / 2, in.width,
                      in.height, destination, out.width, destination + outLuma, out.width / 2,
                      destination + outLuma * 5 / 4, out.width / 2, out.width, out.height, filter);
  };
}

const bool kEntered = [] {
  for (const int soften : {10, 0}) {
    for (const Contest& contest : ScaleContests(soften)) {
      Enter(contest, "libyuv-linear", [=] { return ScalePacked(contest, libyuv::kFilterLinear); });
      Enter(contest, "libyuv-bilinear", [=] { return ScalePacked(contest, libyuv::kFilterBilinear); });
    }
  }
  for (const Contest& contest : MemoryContests()) {
    Enter(contest, "libyuv-linear", [=] { return ScalePacked(contest, libyuv::kFilterLinear); });
  }
  for (const Contest& contest : {Nv12Contest(), AutomaticNv12Contest()}) {
    Enter(contest, "libyuv-linear", [=] { return ScaleNv12(contest, libyuv::kFilterLinear); });
    Enter(contest, "libyuv-bilinear", [=] { return ScaleNv12(contest, libyuv::kFilterBilinear); });
    Enter(contest, "libyuv-box", [=] { return ScaleNv12(contest, libyuv::kFilterBox); });
  }
  for (const int taps : {8, 16}) {
    for (const Contest& contest : AutomaticContests(taps)) {
      Enter(contest, "libyuv-bilinear", [=] { return ScaleI420(contest, libyuv::kFilterBilinear); });
      Enter(contest, "libyuv-box", [=] { return ScaleI420(contest, libyuv::kFilterBox); });
    }
  }
  return true;
}();

}  // namespace
}  // namespace bench
