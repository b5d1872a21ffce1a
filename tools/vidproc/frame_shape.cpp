// Where the picture goes; see frame_shape.h.
#include "frame_shape.h"

#include <algorithm>
#include <cstdint>

namespace vidproc::tool {
namespace {

/// length x up / down, to the nearest even number from 2 to `most`; `most` itself counts as even.
int EvenShare(std::int64_t length, std::int64_t up, std::int64_t down, int most) {
  const std::int64_t share = (length * up + down) / (2 * down) * 2;
  return share + 1 >= most ? most : static_cast<int>(std::max<std::int64_t>(2, share));
}

/// The largest size inside `bounds` with the shape of `size`.
Size Inside(Size bounds, Size size) {
  const std::int64_t width = size.width, height = size.height;
  if (width * bounds.height > height * bounds.width) {
    return {bounds.width, EvenShare(bounds.width, height, width, bounds.height)};
  }
  return {EvenShare(bounds.height, width, height, bounds.width), bounds.height};
}

Rectangle Centred(Size size, Size bounds) {
  return {(bounds.width - size.width) / 4 * 2, (bounds.height - size.height) / 4 * 2, size};
}

Size Completed(Size request, Size input) {
  constexpr int kMost = 16384;
  if (request.width == 0 && request.height == 0) return input;
  if (request.width == 0) return {EvenShare(request.height, input.width, input.height, kMost), request.height};
  if (request.height == 0) return {request.width, EvenShare(request.width, input.height, input.width, kMost)};
  return {request.width, request.height};
}

}  // namespace

FrameShape ShapeFrames(const StreamInfo& input, Size request, Fit fit) {
  const Size wanted = Completed(request, input.size);
  const bool isComplete = request.width > 0 && request.height > 0;
  FrameShape shape{{0, 0, input.size}, wanted, {0, 0, wanted}, input.sampleAspect};
  if (!isComplete) return shape;
  switch (fit) {
    case Fit::kShrink:
      shape.output = shape.target.size = Inside(wanted, input.size);
      break;
    case Fit::kPad:
      shape.target = Centred(Inside(wanted, input.size), wanted);
      break;
    case Fit::kCrop:
      shape.source = Centred(Inside(input.size, wanted), input.size);
      break;
    case Fit::kStretch:
      if (input.sampleAspect.num == 0) break;
      av_reduce(&shape.sampleAspect.num, &shape.sampleAspect.den,
                std::int64_t{input.sampleAspect.num} * input.size.width * wanted.height,
                std::int64_t{input.sampleAspect.den} * input.size.height * wanted.width, 65535);
  }
  return shape;
}

}  // namespace vidproc::tool
