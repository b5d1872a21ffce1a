// Encoding and muxing; see frame_writer.h.
#include "frame_writer.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

#include "errors.h"
#include "ffmpeg_log.h"

namespace vidproc::tool {
namespace {

constexpr double kCrf = 18;

/// Encoders with a list of frame rates take no finer time; MPEG-4's counts at most 65535 units a second.
AVRational CodecTimeBase(const StreamInfo& info, const AVOutputFormat& muxer, const AVCodec& codec) {
  if (!KeepsTimes(muxer) || codec.supported_framerates != nullptr) return av_inv_q(info.frameRate);
  return info.timeBase.num == 0 || info.timeBase.den > 65535 ? AVRational{1, 60000} : info.timeBase;
}

}  // namespace

FrameWriter::FrameWriter(const OutputOptions& options, const OutputFormat& format, StreamInfo stream)
    : info(std::move(stream)), name(OutputName(options.path)), packet(OrBadAlloc(av_packet_alloc())) {
  pixelFormat = CodecFormat(format, info.format, info.colour.range);
  if (pixelFormat != info.format) {
    ColourTags target = info.colour;
    if (IsRgb(pixelFormat)) target = {target.primaries, target.transfer, AVCOL_SPC_RGB, {}, AVCOL_RANGE_JPEG};
    converter.emplace("", pixelFormat, target);
    info.colour = target;
  }
  AVFormatContext* context = nullptr;
  Check(avformat_alloc_output_context2(&context, format.muxer, nullptr, options.path.c_str()));
  muxer.reset(context);
  muxer->flags |= AVFMT_FLAG_BITEXACT;
  if (info.container != nullptr) Check(av_dict_copy(&muxer->metadata, info.container->metadata, 0));
  OpenCodec(options, *format.codec);
  video = OrBadAlloc(avformat_new_stream(context, nullptr));
  Check(avcodec_parameters_from_context(video->codecpar, encoder.get()));
  video->time_base = encoder->time_base;
  video->avg_frame_rate = info.frameRate;
  video->sample_aspect_ratio = encoder->sample_aspect_ratio;
  AddSound();
  files.ServeTo(*context, options.path);
  Dictionary settings;
  if (format.isOnePicture) settings.Set("update", "1");
  Check(avformat_write_header(context, settings.Address()));
}

void FrameWriter::Check(int result) const {
  if (result >= 0) return;
  files.Check();
  const std::string detail = OutputComplaint();
  throw CannotWrite(name, FfmpegError(result) + (detail.empty() ? "" : " (" + detail + ")"));
}

void FrameWriter::OpenCodec(const OutputOptions& options, const AVCodec& codec) {
  const bool isOdd = info.size.width % 2 != 0 || info.size.height % 2 != 0;
  if (isOdd && pixelFormat == AV_PIX_FMT_YUV420P && codec.id == AV_CODEC_ID_H264) {
    throw BadUsage("--size", "H.264 needs an even width and height, not " + ToString(info.size) +
                                 "; .y4m and --codec ffv1 do not");
  }
  encoder.reset(OrBadAlloc(avcodec_alloc_context3(&codec)));
  encoder->width = info.size.width;
  encoder->height = info.size.height;
  encoder->pix_fmt = pixelFormat;
  encoder->time_base = CodecTimeBase(info, *muxer->oformat, codec);
  encoder->framerate = info.frameRate;
  encoder->sample_aspect_ratio = info.sampleAspect;
  encoder->color_range = info.colour.range;
  encoder->color_primaries = info.colour.primaries;
  encoder->color_trc = info.colour.transfer;
  encoder->colorspace = info.colour.matrix;
  encoder->chroma_sample_location = info.colour.chromaLocation;
  encoder->flags |= AV_CODEC_FLAG_BITEXACT;
  encoder->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;  // limited range in JPEG
  if ((muxer->oformat->flags & AVFMT_GLOBALHEADER) != 0) encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  encoder->thread_count = 0;
  const std::string codecName = codec.name;
  if (codecName == "ffv1") {
    encoder->level = 3;  // version 3: slices with checksums
    const bool isTiny = std::min(info.size.width, info.size.height) < 16;
    if (isTiny) encoder->slices = 1;  // by itself it takes four at least
    Check(av_opt_set_int(encoder->priv_data, "slicecrc", 1, 0));
  }
  if (codecName == "libx265") Check(av_opt_set(encoder->priv_data, "x265-params", "log-level=error", 0));
  if (options.crf || codecName == "libx264") {
    Check(av_opt_set_double(encoder->priv_data, "crf", options.crf.value_or(kCrf), 0));
  }
  if (!options.effort.empty()) Check(av_opt_set(encoder->priv_data, "preset", options.effort.c_str(), 0));
  Check(avcodec_open2(encoder.get(), &codec, nullptr));
}

/// Sound goes over as it is where the file can hold it; what is lost is said.
void FrameWriter::AddSound() {
  int lost = 0;
  for (unsigned i = 0; info.container != nullptr && i < info.container->nb_streams; ++i) {
    const AVStream& from = *info.container->streams[i];
    const AVMediaType type = from.codecpar->codec_type;
    if (type == AVMEDIA_TYPE_AUDIO && KeepsTimes(*muxer->oformat) && muxer->oformat->audio_codec != AV_CODEC_ID_NONE &&
        avformat_query_codec(muxer->oformat, from.codecpar->codec_id, FF_COMPLIANCE_NORMAL) != 0) {
      AVStream* to = OrBadAlloc(avformat_new_stream(muxer.get(), nullptr));
      Check(avcodec_parameters_copy(to->codecpar, from.codecpar));
      to->codecpar->codec_tag = 0;
      to->time_base = from.time_base;
      Check(av_dict_copy(&to->metadata, from.metadata, 0));
      sounds.emplace(from.index, Sound{to->index, from.time_base});
    } else if (type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_SUBTITLE) {
      ++lost;
    }
  }
  if (lost > 0 && std::string(muxer->oformat->name) != "null") {
    Note(name + " is without " + std::to_string(lost) + " stream" + (lost > 1 ? "s" : "") +
         " of sound or subtitles, which " + (sounds.empty() ? "it cannot hold" : "stay behind"));
  }
}

/// Encoders hold on to frames, which nobody writes to any more.
FramePtr FrameWriter::ForCodec(const AVFrame& frame) {
  FramePtr own(OrBadAlloc(av_frame_clone(&frame)));
  if (converter) own = converter->Convert(std::move(own));
  const std::int64_t stamp = av_rescale_q(frame.pts, info.timeBase, encoder->time_base);
  own->pts = KeepsTimes(*muxer->oformat) ? stamp : frames;
  own->pict_type = AV_PICTURE_TYPE_NONE;
  own->sample_aspect_ratio = encoder->sample_aspect_ratio;
  return own;
}

void FrameWriter::Write(const AVFrame& frame) {
  const double second = static_cast<double>(frame.pts) * av_q2d(info.timeBase);
  worstDelay = std::max(worstDelay, std::fabs(second * av_q2d(info.frameRate) - static_cast<double>(frames)));
  lastSecond = second + 1 / av_q2d(info.frameRate);
  const FramePtr own = ForCodec(frame);
  Check(avcodec_send_frame(encoder.get(), own.get()));
  ++frames;
  Drain();
}

void FrameWriter::WriteSound(AVPacket& sound) {
  const auto found = sounds.find(sound.stream_index);
  if (found == sounds.end()) return;
  AVStream& to = *muxer->streams[found->second.index];
  av_packet_rescale_ts(&sound, found->second.timeBase, to.time_base);
  sound.stream_index = to.index;
  sound.pos = -1;
  Check(av_interleaved_write_frame(muxer.get(), &sound));
  files.Check();
}

void FrameWriter::Drain() {
  int result = 0;
  while ((result = avcodec_receive_packet(encoder.get(), packet.get())) >= 0) {
    if (packet->duration == 0) packet->duration = av_rescale_q(1, av_inv_q(info.frameRate), encoder->time_base);
    av_packet_rescale_ts(packet.get(), encoder->time_base, video->time_base);
    packet->stream_index = video->index;
    Check(av_interleaved_write_frame(muxer.get(), packet.get()));
    files.Check();
  }
  if (result != AVERROR(EAGAIN) && result != AVERROR_EOF) Check(result);
}

void FrameWriter::Finish() {
  Check(avcodec_send_frame(encoder.get(), nullptr));
  Drain();
  Check(av_write_trailer(muxer.get()));
  files.Close();
  NoteVaryingRate();
}

void FrameWriter::NoteVaryingRate() const {
  if (KeepsTimes(*muxer->oformat) || worstDelay < 1) return;
  char text[128];
  std::snprintf(text, sizeof(text), ": frames do not come at one rate, and here they do: %.2f s become %.2f s; %s",
                lastSecond, static_cast<double>(frames) / av_q2d(info.frameRate), ".mkv and .mp4 keep their times");
  Note(name + text);
}

}  // namespace vidproc::tool
