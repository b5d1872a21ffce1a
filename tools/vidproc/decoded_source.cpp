// Frames of any file that libavformat opens. Damage is an error here, not something to conceal: a result that was made
// from half a file should not pass for a whole one.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "errors.h"
#include "ffmpeg_log.h"
#include "frame_reader.h"

namespace vidproc::tool {
namespace {

std::string Reason(int code) {
  const std::string detail = InputComplaint();
  return FfmpegError(code) + (detail.empty() ? "" : " (" + detail + ")");
}

class DecodedSource final : public FrameSource {
 public:
  explicit DecodedSource(const std::string& path) : packet(OrBadAlloc(av_packet_alloc())) {
    info.name = path;
    AVFormatContext* opened = nullptr;
    const int result = avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, nullptr);
    if (result < 0) throw CannotRead(path, Reason(result));
    format.reset(opened);
    Check(avformat_find_stream_info(opened, nullptr));
    const AVCodec* codec = nullptr;
    streamIndex = av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (streamIndex == AVERROR_STREAM_NOT_FOUND) throw CannotRead(path, "it has no video stream");
    if (streamIndex == AVERROR_DECODER_NOT_FOUND) throw CannotRead(path, "this FFmpeg has no decoder for its video");
    Check(streamIndex);
    OpenCodec(*codec);
    Describe();
    ForgetInputComplaint();  // what probing made of half a frame; decoding says it again if it matters
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
    SetPts(frame);
    ++frames;
    return true;
  }

 private:
  ToolError Damaged(const std::string& reason) const {
    return CannotRead(info.name, "near frame " + std::to_string(frames) + ": " + reason);
  }

  void Check(int result) const {
    if (result < 0) throw Damaged(Reason(result));
  }

  const AVStream& Stream() const { return *format->streams[streamIndex]; }

  void OpenCodec(const AVCodec& codec) {
    decoder.reset(OrBadAlloc(avcodec_alloc_context3(&codec)));
    Check(avcodec_parameters_to_context(decoder.get(), Stream().codecpar));
    decoder->pkt_timebase = Stream().time_base;
    decoder->err_recognition = AV_EF_EXPLODE | AV_EF_CRCCHECK;
    decoder->thread_count = 0;
    Check(avcodec_open2(decoder.get(), &codec, nullptr));
  }

  void Describe() {
    const AVStream& stream = Stream();
    const AVCodecParameters& parameters = *stream.codecpar;
    info.size = {parameters.width, parameters.height};
    const AVRational rate = av_guess_frame_rate(format.get(), format->streams[streamIndex], nullptr);
    if (rate.num > 0 && rate.den > 0 && rate.num < 10000000) info.frameRate = rate;
    info.timeBase = {info.frameRate.den, info.frameRate.num * kTicks};
    info.sampleAspect = av_guess_sample_aspect_ratio(format.get(), format->streams[streamIndex], nullptr);
    info.colour = {parameters.color_primaries, parameters.color_trc, parameters.color_space,
                   parameters.chroma_location};
    info.frameCount = stream.nb_frames;
    if (info.frameCount == 0 && format->duration > 0) {
      info.frameCount = av_rescale_q(format->duration, AVRational{1, AV_TIME_BASE}, av_inv_q(info.frameRate));
    }
  }

  /// Hands the decoder the next packet of the video stream, or the end.
  void Feed() {
    for (;;) {
      const int result = av_read_frame(format.get(), packet.get());
      if (result == AVERROR_EOF) {
        if (format->pb != nullptr && format->pb->error < 0) Check(format->pb->error);
        Check(avcodec_send_packet(decoder.get(), nullptr));
        return;
      }
      Check(result);
      const bool ours = packet->stream_index == streamIndex;
      const bool corrupt = ours && (packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
      const int sent = ours ? avcodec_send_packet(decoder.get(), packet.get()) : 0;
      av_packet_unref(packet.get());
      if (corrupt) throw Damaged("it is truncated or damaged");
      Check(sent);
      if (ours) return;
    }
  }

  /// Time stamps start at 0 and rise, whatever the file says. Containers round them, often to milliseconds: what lies
  /// that near to the frame rate's own grid is put on it.
  void SetPts(AVFrame& frame) {
    const std::int64_t stamp = frame.best_effort_timestamp;
    if (frames == 0) firstStamp = stamp == AV_NOPTS_VALUE ? 0 : stamp;
    std::int64_t pts = lastPts + kTicks;
    if (stamp != AV_NOPTS_VALUE) {
      pts = av_rescale_q(stamp - firstStamp, Stream().time_base, info.timeBase);
      const std::int64_t nearest = (pts + kTicks / 2) / kTicks * kTicks;
      if (std::abs(pts - nearest) <= kSnap) pts = nearest;
    }
    lastPts = frames == 0 ? 0 : std::max(pts, lastPts + 1);
    frame.pts = lastPts;
  }

  static constexpr int kTicks = 64;  ///< of the time base per frame
  static constexpr int kSnap = 2;

  InputFormatPtr format;
  CodecPtr decoder;
  PacketPtr packet;
  int streamIndex = -1;
  std::int64_t frames = 0;
  std::int64_t firstStamp = 0;
  std::int64_t lastPts = 0;
};

}  // namespace

std::unique_ptr<FrameSource> OpenDecoder(const std::string& path) { return std::make_unique<DecodedSource>(path); }

}  // namespace vidproc::tool
