// Choice of the source and what all sources have in common; see frame_reader.h.
#include "frame_reader.h"

#include <algorithm>
#include <cstdio>

#include "errors.h"

namespace vidproc::tool {
namespace {

constexpr std::int64_t kSyntheticFrames = 150;

std::unique_ptr<FrameSource> OpenSource(const InputOptions& options) {
  if (options.synthetic) {
    return OpenSyntheticScene(options.syntheticSize, static_cast<std::uint32_t>(options.seed),
                              static_cast<double>(options.syntheticNoise) / 100);
  }
  if (!options.rawFormat.empty()) return OpenRaw(options.path, options.rawFormat, options.rawSize);
  if (options.path == "-" || options.path.ends_with(".y4m")) return OpenY4m(options.path);
  return OpenDecoder(options.path);
}

}  // namespace

void DescribeFrame(const StreamInfo& info, AVPixelFormat format, const std::uint8_t* bytes, std::int64_t pts,
                   AVFrame& frame) {
  BorrowBytes(format, info.size, bytes, frame);
  frame.pts = pts;
  frame.color_range = AVCOL_RANGE_MPEG;
  frame.color_primaries = info.colour.primaries;
  frame.color_trc = info.colour.transfer;
  frame.colorspace = info.colour.matrix;
  frame.chroma_location = info.colour.chromaLocation;
}

FrameReader::FrameReader(const InputOptions& options, Layout layout)
    : source(OpenSource(options)), info(source->Info()), converter(layout), frame(OrBadAlloc(av_frame_alloc())) {
  if (info.size.width % 2 != 0) {
    throw CannotRead(info.name,
                     "frames are " + ToString(info.size) + "; pixels share chroma in pairs, so the width must be even");
  }
  limit = options.frames > 0 ? options.frames : options.synthetic ? kSyntheticFrames : INT64_MAX;
  info.frameCount = info.frameCount > 0 ? std::min(info.frameCount, limit) : limit < INT64_MAX ? limit : 0;
}

bool FrameReader::Read(Picture& picture) {
  if (framesRead == limit) return false;
  if (!source->Next(*frame)) {
    if (framesRead == 0) throw CannotRead(info.name, "it holds no frame");
    return false;
  }
  const Size size{frame->width, frame->height};
  if (!(size == info.size)) {
    throw CannotRead(info.name, "the frame size changes from " + ToString(info.size) + " to " + ToString(size) +
                                    " at frame " + std::to_string(framesRead));
  }
  const bool told = converter.ConvertedFullRange();
  converter.Convert(*frame, picture);
  if (converter.ConvertedFullRange() && !told) {
    std::fprintf(stderr, "vidproc: note: %s is full range; converted to limited range\n", info.name.c_str());
  }
  picture.pts = frame->pts;
  ++framesRead;
  return true;
}

}  // namespace vidproc::tool
