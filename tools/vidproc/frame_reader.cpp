// What all sources have in common; see frame_reader.h.
#include "frame_reader.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>

#include "errors.h"

namespace vidproc::tool {
namespace {

constexpr std::int64_t kSyntheticFrames = 150;

std::unique_ptr<FrameSource> OpenSource(const InputOptions& options) {
  if (options.synthetic) {
    return OpenSyntheticScene(options.syntheticSize, static_cast<std::uint32_t>(options.seed),
                              static_cast<double>(options.syntheticNoise) / 100);
  }
  return OpenDecoder(options);
}

const AVPixFmtDescriptor& Description(AVPixelFormat format) { return *av_pix_fmt_desc_get(format); }

/// FFmpeg has names of their own for some formats in full range.
AVPixelFormat WithoutRange(AVPixelFormat format) {
  switch (format) {
    case AV_PIX_FMT_YUVJ420P:
      return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
      return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
      return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
      return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
      return AV_PIX_FMT_YUV411P;
    default:
      return format;
  }
}

/// The accepted format that loses least chroma.
AVPixelFormat Nearest(AVPixelFormat format, std::span<const AVPixelFormat> accepted) {
  if (std::find(accepted.begin(), accepted.end(), format) != accepted.end()) return format;
  const bool isHalved = Description(format).log2_chroma_h > 0 || Description(format).nb_components < 3;
  const AVPixelFormat wanted = isHalved ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV422P;
  return std::find(accepted.begin(), accepted.end(), wanted) != accepted.end() ? wanted : accepted.front();
}

bool IsHighDynamicRange(const AVFrame& frame) {
  return frame.color_trc == AVCOL_TRC_SMPTE2084 || frame.color_trc == AVCOL_TRC_ARIB_STD_B67;
}

}  // namespace

FrameReader::FrameReader(const InputOptions& options, std::span<const AVPixelFormat> accepted)
    : source(OpenSource(options)), info(source->Info()), hasSkipped(options.skip > 0) {
  limit = options.frames > 0 ? options.frames : options.synthetic ? kSyntheticFrames : INT64_MAX;
  for (std::int64_t i = 0; i <= options.skip; ++i) {
    next = Decode();
    if (!next) {
      throw CannotRead(info.name, framesDecoded == 0 ? "it holds no frame"
                                                     : "it has only " + std::to_string(framesDecoded) +
                                                           " frames; skip fewer than that");
    }
  }
  Describe(*next, accepted);
  const std::int64_t left = std::max<std::int64_t>(0, info.frameCount - options.skip);
  info.frameCount = left > 0 ? std::min(left, limit) : limit < INT64_MAX ? limit : 0;
}

void FrameReader::Describe(const AVFrame& first, std::span<const AVPixelFormat> accepted) {
  decodedSize = {first.width, first.height};
  info.size = decodedSize;
  const auto decoded = static_cast<AVPixelFormat>(first.format);
  info.format = Nearest(WithoutRange(decoded), accepted);
  if (first.sample_aspect_ratio.num > 0) info.sampleAspect = first.sample_aspect_ratio;
  if (source->Upright().starts_with("transpose")) {
    std::swap(info.size.width, info.size.height);
    if (info.sampleAspect.num > 0) info.sampleAspect = av_inv_q(info.sampleAspect);
  }
  if (info.sampleAspect.num <= 0 || info.sampleAspect.den <= 0) info.sampleAspect = {0, 1};
  if (Description(decoded).comp[0].depth > 8 && IsHighDynamicRange(first)) {
    throw CannotRead(info.name,
                     "it has high dynamic range (PQ or HLG), which 8 bits cannot hold; map its tones first, say with "
                     "ffmpeg's filters zscale and tonemap");
  }
  AssumeColour(first);
  NoteLosses(first);
  firstStamp = first.pts == AV_NOPTS_VALUE ? 0 : first.pts;
  converter.emplace(source->Upright(), info.format, info.colour);
}

/// Fills in what the stream leaves open, as players do: by the size of the picture.
void FrameReader::AssumeColour(const AVFrame& first) {
  ColourTags& colour = info.colour;
  const auto decoded = static_cast<AVPixelFormat>(first.format);
  const bool isRgb = IsRgb(decoded);
  const bool isLarge = info.size.height >= 720;
  colour = ColourOf(first);
  const bool isJpegFormat = WithoutRange(decoded) != decoded;
  if (isJpegFormat) colour.range = AVCOL_RANGE_JPEG;
  std::string assumed;
  if (isRgb || colour.matrix == AVCOL_SPC_UNSPECIFIED || colour.matrix == AVCOL_SPC_RGB) {
    colour.matrix = isLarge ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    assumed = isLarge ? "BT.709" : "BT.601";
  }
  if (colour.primaries == AVCOL_PRI_UNSPECIFIED) {
    colour.primaries = isLarge || isRgb ? AVCOL_PRI_BT709 : AVCOL_PRI_SMPTE170M;
  }
  if (colour.transfer == AVCOL_TRC_UNSPECIFIED) {
    colour.transfer = isRgb ? AVCOL_TRC_IEC61966_2_1 : isLarge ? AVCOL_TRC_BT709 : AVCOL_TRC_SMPTE170M;
  }
  if (isRgb || colour.range == AVCOL_RANGE_UNSPECIFIED) {
    if (!isRgb) assumed += assumed.empty() ? "limited range" : ", limited range";
    colour.range = AVCOL_RANGE_MPEG;
  }
  if (isRgb) {
    Note(info.name + " is RGB; converted to " + assumed + ", limited range");
  } else if (!assumed.empty()) {
    Note(info.name + " does not say what its colours mean; taken and tagged as " + assumed);
  }
  const bool isCentred = colour.chromaLocation == AVCHROMA_LOC_CENTER || colour.chromaLocation == AVCHROMA_LOC_TOP ||
                         (colour.chromaLocation == AVCHROMA_LOC_UNSPECIFIED && isJpegFormat);
  colour.chromaLocation = isCentred && !isRgb ? AVCHROMA_LOC_CENTER : AVCHROMA_LOC_LEFT;
}

void FrameReader::NoteLosses(const AVFrame& first) const {
  const AVPixFmtDescriptor& description = Description(static_cast<AVPixelFormat>(first.format));
  if (description.comp[0].depth > 8) {
    Note(info.name + " has " + std::to_string(description.comp[0].depth) + " bits a sample; reduced to 8");
  }
  if ((description.flags & AV_PIX_FMT_FLAG_ALPHA) != 0) Note(info.name + " has an alpha channel, which is dropped");
  if (!source->Upright().empty()) Note(info.name + " is to be shown turned; its frames are turned");
  if (first.interlaced_frame != 0) {
    Note(info.name +
         " is interlaced and taken as progressive; if it combs, deinterlace it first, say with ffmpeg -vf bwdif");
  }
}

FramePtr FrameReader::Decode() {
  FramePtr frame = NewFrame();
  if (!source->Next(*frame)) return nullptr;
  ++framesDecoded;
  return frame;
}

/// Time stamps rise, whatever the file says.
void FrameReader::Stamp(AVFrame& frame) {
  const std::int64_t step = std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(info.frameRate), info.timeBase));
  const bool isStamped = frame.pts != AV_NOPTS_VALUE;
  const std::int64_t stamp = isStamped ? frame.pts - firstStamp : lastStamp + step;
  frame.pts = framesRead == 0 ? 0 : std::max(stamp, lastStamp + 1);
  lastStamp = frame.pts;
}

FramePtr FrameReader::Read() {
  if (framesRead == limit) return nullptr;
  FramePtr frame = next ? std::move(next) : Decode();
  if (!frame) return nullptr;
  if (!isRescaled && !(Size{frame->width, frame->height} == decodedSize)) KeepSize(*frame);
  const AVPixelFormat format = WithoutRange(static_cast<AVPixelFormat>(frame->format));
  Stamp(*frame);
  if (format == info.format && source->Upright().empty() && !isRescaled) {
    frame->format = format;
    SetColour(*frame, info.colour);
  } else {
    if (!IsRgb(format)) SetColour(*frame, info.colour);
    frame = converter->Convert(std::move(frame));
  }
  frame->sample_aspect_ratio = info.sampleAspect;
  ++framesRead;
  return frame;
}

/// From the first frame of another size on, all are scaled to what the stream began with.
void FrameReader::KeepSize(const AVFrame& frame) {
  Note(info.name + ": the frame size changes from " + ToString(decodedSize) + " to " +
       ToString({frame.width, frame.height}) + " at frame " + std::to_string(framesDecoded - 1) +
       "; frames are scaled back");
  const std::string upright = source->Upright().empty() ? "" : source->Upright() + ",";
  converter.emplace(upright + "scale=" + ToString(info.size), info.format, info.colour);
  isRescaled = true;
}

std::vector<PacketPtr> FrameReader::TakeSound() {
  std::vector<PacketPtr> packets = source->TakeSound();
  std::vector<PacketPtr> kept;
  for (PacketPtr& packet : packets) {
    const AVRational timeBase = info.container->streams[packet->stream_index]->time_base;
    const std::int64_t shift = av_rescale_q(firstStamp, info.timeBase, timeBase);
    if (packet->pts != AV_NOPTS_VALUE) packet->pts -= shift;
    if (packet->dts != AV_NOPTS_VALUE) packet->dts -= shift;
    const bool isBefore = hasSkipped && packet->pts != AV_NOPTS_VALUE && packet->pts + packet->duration <= 0;
    const bool isBehind = framesRead == limit && packet->pts != AV_NOPTS_VALUE &&
                          av_compare_ts(packet->pts, timeBase, lastStamp, info.timeBase) > 0;
    if (!isBefore && !isBehind) kept.push_back(std::move(packet));
  }
  return kept;
}

}  // namespace vidproc::tool
