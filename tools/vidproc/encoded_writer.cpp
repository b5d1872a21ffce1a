// Frames into a container: FFV1 in Matroska, which is lossless, or x264 at CRF 18 in MP4.
extern "C" {
#include <libavutil/opt.h>
}

#include <vector>

#include "errors.h"
#include "ffmpeg_handles.h"
#include "frame_writer.h"
#include "picture_converter.h"

namespace vidproc::tool {
namespace {

class EncodedWriter final : public FrameWriter {
 public:
  EncodedWriter(const std::string& path, const StreamInfo& info, Layout layout)
      : FrameWriter(path), info(info), packet(OrBadAlloc(av_packet_alloc())) {
    const bool lossless = path.ends_with(".mkv");
    // Players expect 4:2:0 in an MP4; Matroska keeps what the library made.
    pixelFormat = lossless ? PlanarFormat(layout) : AV_PIX_FMT_YUV420P;
    OpenCodec(lossless ? "ffv1" : "libx264", lossless);
    AVFormatContext* context = nullptr;
    Check(avformat_alloc_output_context2(&context, nullptr, lossless ? "matroska" : "mp4", nullptr));
    muxer.reset(context);
    stream = OrBadAlloc(avformat_new_stream(context, nullptr));
    Check(avcodec_parameters_from_context(stream->codecpar, encoder.get()));
    stream->time_base = encoder->time_base;
    stream->avg_frame_rate = info.frameRate;
    stream->sample_aspect_ratio = encoder->sample_aspect_ratio;
    Check(avio_open(&context->pb, ("file:" + file.WorkingPath()).c_str(), AVIO_FLAG_WRITE));
    Check(avformat_write_header(context, nullptr));
  }

  void Write(const Picture& picture) override {
    FramePtr frame =
        picture.layout == Layout::kUyvy && pixelFormat == AV_PIX_FMT_YUV420P ? Subsampled(picture) : Planar(picture);
    frame->pts = picture.pts;
    Check(avcodec_send_frame(encoder.get(), frame.get()));
    Drain();
  }

  void Finish() override {
    Check(avcodec_send_frame(encoder.get(), nullptr));
    Drain();
    Check(av_write_trailer(muxer.get()));
    Check(avio_closep(&muxer->pb));
    FrameWriter::Finish();
  }

 private:
  void Check(int result) const {
    if (result < 0) throw CannotWrite(file.Name(), FfmpegError(result));
  }

  void OpenCodec(const char* name, bool lossless) {
    const AVCodec* codec = avcodec_find_encoder_by_name(name);
    if (codec == nullptr) throw CannotWrite(file.Name(), std::string("this FFmpeg has no ") + name + " encoder");
    encoder.reset(OrBadAlloc(avcodec_alloc_context3(codec)));
    encoder->width = info.size.width;
    encoder->height = info.size.height;
    encoder->pix_fmt = pixelFormat;
    encoder->time_base = info.timeBase;
    encoder->framerate = info.frameRate;
    encoder->sample_aspect_ratio = info.sampleAspect;
    encoder->color_range = AVCOL_RANGE_MPEG;
    encoder->color_primaries = info.colour.primaries;
    encoder->color_trc = info.colour.transfer;
    encoder->colorspace = info.colour.matrix;
    encoder->chroma_sample_location = info.colour.chromaLocation;
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    encoder->thread_count = 0;
    if (lossless) {
      encoder->level = 3;  // version 3: slices with checksums
      Check(av_opt_set_int(encoder->priv_data, "slicecrc", 1, 0));
    } else {
      Check(av_opt_set(encoder->priv_data, "crf", "18", 0));
    }
    Check(avcodec_open2(encoder.get(), codec, nullptr));
  }

  FramePtr Planar(const Picture& picture) {
    ToPlanar(picture, planes);
    FramePtr borrowed = WrapFrame(pixelFormat, picture.size, planes.data());
    FramePtr frame = NewFrame(picture.size);
    Check(av_frame_copy(frame.get(), borrowed.get()));
    return frame;
  }

  FramePtr Subsampled(const Picture& picture) {
    FramePtr packed = WrapFrame(AV_PIX_FMT_UYVY422, picture.size, picture.bytes.data());
    FramePtr frame = NewFrame(picture.size);
    scaler.Convert(*packed, *frame);
    return frame;
  }

  /// Encoders hold on to frames, so each has buffers of its own.
  FramePtr NewFrame(Size size) const {
    FramePtr frame(OrBadAlloc(av_frame_alloc()));
    frame->format = pixelFormat;
    frame->width = size.width;
    frame->height = size.height;
    frame->color_range = AVCOL_RANGE_MPEG;
    Check(av_frame_get_buffer(frame.get(), 0));
    return frame;
  }

  void Drain() {
    int result = 0;
    while ((result = avcodec_receive_packet(encoder.get(), packet.get())) >= 0) {
      if (packet->duration == 0) packet->duration = av_rescale_q(1, av_inv_q(info.frameRate), encoder->time_base);
      av_packet_rescale_ts(packet.get(), encoder->time_base, stream->time_base);
      packet->stream_index = stream->index;
      Check(av_interleaved_write_frame(muxer.get(), packet.get()));
      Check(muxer->pb->error);
    }
    if (result != AVERROR(EAGAIN) && result != AVERROR_EOF) Check(result);
  }

  StreamInfo info;
  PacketPtr packet;
  CodecPtr encoder;
  OutputFormatPtr muxer;
  AVStream* stream = nullptr;
  AVPixelFormat pixelFormat = AV_PIX_FMT_NONE;
  Scaler scaler;
  std::vector<std::uint8_t> planes;
};

}  // namespace

std::unique_ptr<FrameWriter> OpenEncoder(const std::string& path, const StreamInfo& info, Layout layout) {
  return std::make_unique<EncodedWriter>(path, info, layout);
}

}  // namespace vidproc::tool
