// Frames of any file that libavformat opens. Damage is an error here, not something to conceal: a result that was made
// from half a file should not pass for a whole one.
extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <cmath>
#include <string>
#include <utility>

#include "errors.h"
#include "ffmpeg_log.h"
#include "file_io.h"
#include "frame_reader.h"
#include "input_pipe.h"

namespace vidproc::tool {
namespace {

std::string Reason(int code) {
  const std::string detail = InputComplaint();
  return FfmpegError(code) + (detail.empty() ? "" : " (" + detail + ")");
}

using OpenFunction = int (*)(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**);
OpenFunction openInside = nullptr;

/// Demuxers of playlists and of numbered pictures open files of their own; none of them is to be replaced either.
int OpenAndRemember(AVFormatContext* context, AVIOContext** io, const char* url, int flags, AVDictionary** options) {
  const std::string path = url;
  InputFiles::Add(path.starts_with("file:") ? path.substr(5) : path);
  return openInside(context, io, url, flags, options);
}

class DecodedSource final : public FrameSource {
 public:
  explicit DecodedSource(const InputOptions& options) : packet(OrBadAlloc(av_packet_alloc())) {
    info.name = options.path == "-" ? "standard input" : options.path;
    Open(options);
    Check(avformat_find_stream_info(format.get(), nullptr));
    const AVCodec* codec = nullptr;
    streamIndex = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (streamIndex == AVERROR_STREAM_NOT_FOUND) throw CannotRead(info.name, "it has no video stream");
    if (streamIndex == AVERROR_DECODER_NOT_FOUND)
      throw CannotRead(info.name, "this FFmpeg has no decoder for its video");
    Check(streamIndex);
    OpenCodec(*codec);
    Describe();
    ForgetDecoderComplaint();  // what probing made of half a frame; decoding says it again if it matters
  }

  bool Next(AVFrame& frame) override {
    int result = 0;
    while ((result = avcodec_receive_frame(decoder.get(), &frame)) == AVERROR(EAGAIN)) Feed();
    if (result == AVERROR_EOF) {
      if (const std::string detail = InputComplaint(); !detail.empty()) throw Damaged(detail);
      return false;
    }
    Check(result);
    if (frame.decode_error_flags != 0 || (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0) {
      throw Damaged(InputComplaint().empty() ? "it is damaged" : InputComplaint());
    }
    frame.pts = frame.best_effort_timestamp;
    ++frames;
    return true;
  }

  void GiveUp() override {
    if (pipe) pipe->GiveUp();
  }

 private:
  ToolError Damaged(const std::string& reason) const {
    const bool isMp4 = std::string(format->iformat->name).starts_with("mov,");
    const char* remedy =
        pipe && isMp4 && frames == 0 ? "; an MP4 in a pipe must begin with its index (+faststart)" : "";
    return CannotRead(info.name, "near frame " + std::to_string(frames) + ": " + reason + remedy);
  }

  void Check(int result) const {
    if (result < 0) throw Damaged(Reason(result));
  }

  const AVStream& Stream() const { return *format->streams[streamIndex]; }

  void Open(const InputOptions& options) {
    Dictionary settings;
    settings.Set("protocol_whitelist", "file,crypto,data");  // a playlist does not make the tool fetch anything
    settings.Set("pattern_type", "sequence");
    const AVInputFormat* demuxer = nullptr;
    if (options.rawFormat != AV_PIX_FMT_NONE) {
      demuxer = av_find_input_format("rawvideo");
      settings.Set("pixel_format", av_get_pix_fmt_name(options.rawFormat));
      settings.Set("video_size", ToString(options.rawSize));
    }
    if (!options.frameRate.empty()) settings.Set("framerate", options.frameRate);
    if (InputPipe::IsNeededFor(options.path)) pipe = std::make_unique<InputPipe>(options.path);
    AVFormatContext* context = OrBadAlloc(avformat_alloc_context());
    if (pipe) context->pb = pipe->Io();
    openInside = std::exchange(context->io_open, OpenAndRemember);
    InputFiles::Add(options.path);
    const std::string url = pipe ? "" : "file:" + options.path;
    const int result = avformat_open_input(&context, url.c_str(), demuxer, settings.Address());
    if (result < 0) throw CannotRead(info.name, Reason(result));  // and the context is gone
    format.reset(context);
  }

  /// Frames of up to two million pixels are decoded by one thread: more of them take more time in sum, and the frames
  /// are processed and encoded by other threads meanwhile.
  void OpenCodec(const AVCodec& codec) {
    decoder.reset(OrBadAlloc(avcodec_alloc_context3(&codec)));
    Check(avcodec_parameters_to_context(decoder.get(), Stream().codecpar));
    decoder->pkt_timebase = Stream().time_base;
    decoder->err_recognition = AV_EF_EXPLODE | AV_EF_CRCCHECK;
    decoder->thread_count = std::int64_t{decoder->width} * decoder->height > 1920 * 1088 ? 0 : 1;
    Check(avcodec_open2(decoder.get(), &codec, nullptr));
  }

  void Describe() {
    const AVStream& stream = Stream();
    const AVCodecParameters& parameters = *stream.codecpar;
    const AVRational rate = av_guess_frame_rate(format.get(), format->streams[streamIndex], nullptr);
    if (rate.num > 0 && rate.den > 0 && rate.num < 10000000) info.frameRate = rate;
    info.timeBase = stream.time_base;
    info.sampleAspect = av_guess_sample_aspect_ratio(format.get(), format->streams[streamIndex], nullptr);
    info.colour = {parameters.color_primaries, parameters.color_trc, parameters.color_space, parameters.chroma_location,
                   parameters.color_range};
    info.frameCount = stream.nb_frames;
    if (info.frameCount == 0 && format->duration > 0) {
      info.frameCount = av_rescale_q(format->duration, AVRational{1, AV_TIME_BASE}, av_inv_q(info.frameRate));
    }
    info.container = format.get();
    const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix != nullptr) ReadDisplayMatrix(reinterpret_cast<const std::int32_t*>(matrix));
  }

  void ReadDisplayMatrix(const std::int32_t* matrix) {
    const double degrees = -av_display_rotation_get(matrix);
    if (std::isnan(degrees)) return;
    const int quarters = static_cast<int>(std::lround(degrees / 90));
    if (std::fabs(degrees - quarters * 90) > 1) {
      throw CannotRead(info.name, "it is to be shown at a slant of " + std::to_string(std::lround(degrees)) +
                                      " degrees; only quarter turns are possible");
    }
    switch (quarters & 3) {
      case 0:
        if (matrix[4] < 0) upright = "vflip";
        break;
      case 1:
        upright = matrix[3] > 0 ? "transpose=cclock_flip" : "transpose=clock";
        break;
      case 2:
        upright = matrix[0] < 0 && matrix[4] < 0 ? "hflip,vflip" : matrix[0] < 0 ? "hflip" : "vflip";
        break;
      default:
        upright = matrix[3] < 0 ? "transpose=clock_flip" : "transpose=cclock";
    }
  }

  /// Hands the decoder the next packet of the video stream, or the end.
  void Feed() {
    for (;;) {
      const int result = av_read_frame(format.get(), packet.get());
      if (result == AVERROR_EOF) {
        CheckEnd();
        Check(avcodec_send_packet(decoder.get(), nullptr));
        return;
      }
      Check(result);
      const AVMediaType type = format->streams[packet->stream_index]->codecpar->codec_type;
      if (type == AVMEDIA_TYPE_AUDIO) sound.emplace_back(OrBadAlloc(av_packet_clone(packet.get())));
      const bool ours = packet->stream_index == streamIndex;
      const bool corrupt = ours && (packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
      if (ours && packet->pos >= 0) packetEnd = packet->pos + packet->size;
      const int sent = ours ? avcodec_send_packet(decoder.get(), packet.get()) : 0;
      av_packet_unref(packet.get());
      if (corrupt) throw Damaged("it is truncated or damaged");
      Check(sent);
      if (ours) return;
    }
  }

  /// The demuxer of Y4M takes a part of a frame for the end of the file.
  void CheckEnd() const {
    const AVIOContext* io = format->pb;
    if (io == nullptr) return;
    if (io->error < 0) Check(io->error);
    const bool isY4m = std::string(format->iformat->name) == "yuv4mpegpipe";
    if (isY4m && avio_tell(format->pb) > packetEnd && frames > 0) throw Damaged("it is truncated");
  }

  std::unique_ptr<InputPipe> pipe;  // outlives the demuxer
  FormatPtr format;
  CodecPtr decoder;
  PacketPtr packet;
  int streamIndex = -1;
  std::int64_t frames = 0;
  std::int64_t packetEnd = 0;
};

}  // namespace

std::unique_ptr<FrameSource> OpenDecoder(const InputOptions& options) {
  return std::make_unique<DecodedSource>(options);
}

}  // namespace vidproc::tool
