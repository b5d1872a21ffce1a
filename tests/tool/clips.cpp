#include "tool/clips.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace testing_support {
namespace {

struct Free {
  void operator()(AVFormatContext* context) const { avformat_free_context(context); }
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

struct CloseInput {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

constexpr AVRational kMilliseconds = {1, 1000};

std::unique_ptr<AVCodecContext, Free> OpenEncoder(const ClipSettings& settings) {
  const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_FFV1);
  std::unique_ptr<AVCodecContext, Free> encoder(avcodec_alloc_context3(codec));
  encoder->width = settings.width;
  encoder->height = settings.height;
  encoder->pix_fmt = settings.format;
  encoder->time_base = kMilliseconds;
  encoder->sample_aspect_ratio = settings.sampleAspect;
  encoder->color_range = settings.range;
  encoder->colorspace = settings.matrix;
  encoder->color_primaries = settings.primaries;
  encoder->color_trc = settings.transfer;
  encoder->chroma_sample_location = settings.location;
  encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  encoder->level = 3;
  av_opt_set_int(encoder->priv_data, "slicecrc", 1, 0);
  EXPECT_GE(avcodec_open2(encoder.get(), codec, nullptr), 0);
  return encoder;
}

void Paint(AVFrame& frame, int number) {
  const int bytes = av_image_get_linesize(static_cast<AVPixelFormat>(frame.format), frame.width, 0) / frame.width;
  for (int plane = 0; plane < 4 && frame.data[plane] != nullptr; ++plane) {
    const int rows = plane == 1 || plane == 2 ? frame.height / 2 : frame.height;  // of 4:2:0
    for (int y = 0; y < rows; ++y) {
      std::uint8_t* row = frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane];
      for (int x = 0; x < frame.linesize[plane]; ++x) {
        const int luma = (20 + 3 * (x / bytes) + 5 * number + y) % 220;
        const bool isHighByte = bytes == 2 && x % 2 == 1;
        row[x] = static_cast<std::uint8_t>(isHighByte ? 1 : plane == 0 ? luma : 100 + 20 * plane + y);
      }
    }
  }
}

}  // namespace

void MakeClip(const std::string& path, const ClipSettings& settings) {
  av_log_set_level(AV_LOG_ERROR);
  AVFormatContext* context = nullptr;
  ASSERT_GE(avformat_alloc_output_context2(&context, nullptr, nullptr, path.c_str()), 0);
  const std::unique_ptr<AVFormatContext, Free> muxer(context);
  const auto encoder = OpenEncoder(settings);
  AVStream* video = avformat_new_stream(context, nullptr);
  avcodec_parameters_from_context(video->codecpar, encoder.get());
  video->time_base = kMilliseconds;
  video->sample_aspect_ratio = settings.sampleAspect;
  if (settings.rotation != 0) {
    auto* matrix = reinterpret_cast<std::int32_t*>(
        av_stream_new_side_data(video, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
    av_display_rotation_set(matrix, -settings.rotation);
  }
  AVStream* sound = settings.soundPackets > 0 ? avformat_new_stream(context, nullptr) : nullptr;
  if (sound != nullptr) {
    sound->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    sound->codecpar->codec_id = AV_CODEC_ID_PCM_S16LE;
    sound->codecpar->sample_rate = 8000;
    sound->codecpar->bits_per_coded_sample = 16;
    sound->codecpar->block_align = 2;
    av_channel_layout_default(&sound->codecpar->ch_layout, 1);
  }
  ASSERT_GE(avio_open(&context->pb, path.c_str(), AVIO_FLAG_WRITE), 0);
  ASSERT_GE(avformat_write_header(context, nullptr), 0);
  const std::unique_ptr<AVPacket, Free> packet(av_packet_alloc());
  int number = 0;
  const auto drain = [&] {
    while (avcodec_receive_packet(encoder.get(), packet.get()) >= 0) {
      packet->duration = 40;
      av_packet_rescale_ts(packet.get(), kMilliseconds, video->time_base);
      packet->stream_index = video->index;
      av_interleaved_write_frame(context, packet.get());
    }
  };
  for (const std::int64_t stamp : settings.milliseconds) {
    const std::unique_ptr<AVFrame, Free> frame(av_frame_alloc());
    frame->format = settings.format;
    frame->width = settings.width;
    frame->height = settings.height;
    av_frame_get_buffer(frame.get(), 0);
    Paint(*frame, number++);
    frame->pts = stamp;
    ASSERT_GE(avcodec_send_frame(encoder.get(), frame.get()), 0);
    drain();
  }
  for (int i = 0; i < settings.soundPackets; ++i) {
    av_new_packet(packet.get(), 320);
    std::fill_n(packet->data, 320, static_cast<std::uint8_t>(i));
    packet->stream_index = sound->index;
    packet->pts = packet->dts = av_rescale_q(i * 20, kMilliseconds, sound->time_base);
    packet->duration = av_rescale_q(20, kMilliseconds, sound->time_base);
    ASSERT_GE(av_interleaved_write_frame(context, packet.get()), 0);
  }
  avcodec_send_frame(encoder.get(), nullptr);
  drain();
  av_write_trailer(context);
  avio_closep(&context->pb);
}

namespace {

void AddFrames(AVCodecContext& decoder, const AVPacket* packet, AVRational timeBase, ClipFacts& facts) {
  avcodec_send_packet(&decoder, packet);
  const std::unique_ptr<AVFrame, Free> frame(av_frame_alloc());
  while (avcodec_receive_frame(&decoder, frame.get()) >= 0) {
    facts.format = static_cast<AVPixelFormat>(frame->format);
    facts.milliseconds.push_back(av_rescale_q(frame->best_effort_timestamp, timeBase, kMilliseconds));
    const int size = av_image_get_buffer_size(facts.format, frame->width, frame->height, 1);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    av_image_copy_to_buffer(reinterpret_cast<std::uint8_t*>(bytes.data()), size, frame->data, frame->linesize,
                            facts.format, frame->width, frame->height, 1);
    facts.frames.push_back(std::move(bytes));
  }
}

void Describe(const AVStream& stream, ClipFacts& facts) {
  const AVCodecParameters& video = *stream.codecpar;
  facts.width = video.width;
  facts.height = video.height;
  facts.codec = avcodec_get_name(video.codec_id);
  facts.sampleAspect = stream.sample_aspect_ratio;
  facts.range = video.color_range;
  facts.matrix = video.color_space;
  facts.primaries = video.color_primaries;
  facts.transfer = video.color_trc;
  facts.location = video.chroma_location;
  const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (matrix == nullptr) return;
  facts.rotation =
      static_cast<int>(std::lround(av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix))));
}

}  // namespace

ClipFacts Examine(const std::string& path) {
  ClipFacts facts;
  AVFormatContext* context = nullptr;
  EXPECT_GE(avformat_open_input(&context, path.c_str(), nullptr, nullptr), 0) << path;
  if (context == nullptr) return facts;
  const std::unique_ptr<AVFormatContext, CloseInput> demuxer(context);
  avformat_find_stream_info(context, nullptr);
  const AVCodec* codec = nullptr;
  const int index = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
  EXPECT_GE(index, 0);
  if (index < 0) return facts;
  const AVStream& stream = *context->streams[index];
  const std::unique_ptr<AVCodecContext, Free> decoder(avcodec_alloc_context3(codec));
  avcodec_parameters_to_context(decoder.get(), stream.codecpar);
  decoder->thread_count = 1;
  avcodec_open2(decoder.get(), codec, nullptr);
  Describe(stream, facts);
  const std::unique_ptr<AVPacket, Free> packet(av_packet_alloc());
  while (av_read_frame(context, packet.get()) >= 0) {
    if (packet->stream_index == index) {
      AddFrames(*decoder, packet.get(), stream.time_base, facts);
    } else {
      facts.sound.append(reinterpret_cast<const char*>(packet->data), static_cast<std::size_t>(packet->size));
    }
    av_packet_unref(packet.get());
  }
  AddFrames(*decoder, nullptr, stream.time_base, facts);
  return facts;
}

}  // namespace testing_support
