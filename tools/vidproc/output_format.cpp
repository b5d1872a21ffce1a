// Container, codec and pixel format; see output_format.h.
#include "output_format.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <filesystem>
#include <map>

#include "errors.h"
#include "library_frame.h"

namespace vidproc::tool {
namespace {

const std::map<std::string, AVPixelFormat>& RawFormats() {
  static const std::map<std::string, AVPixelFormat> kFormats = {
      {"uyvy", AV_PIX_FMT_UYVY422}, {"yuyv", AV_PIX_FMT_YUYV422}, {"nv12", AV_PIX_FMT_NV12},
      {"i420", AV_PIX_FMT_YUV420P}, {"yuv", AV_PIX_FMT_YUV420P},  {"i422", AV_PIX_FMT_YUV422P},
  };
  return kFormats;
}

std::string Ending(const std::string& path) {
  std::string ending = std::filesystem::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char letter) { return std::tolower(letter); });
  return ending.empty() ? ending : ending.substr(1);
}

const AVOutputFormat* ChooseMuxer(const OutputOptions& options) {
  if (!options.muxer.empty()) {
    const AVOutputFormat* muxer = av_guess_format(options.muxer.c_str(), nullptr, nullptr);
    if (muxer == nullptr) throw BadUsage("--format", "\"" + options.muxer + "\" is not a format; see ffmpeg -muxers");
    return muxer;
  }
  if (options.path == "/dev/null") return av_guess_format("null", nullptr, nullptr);
  if (options.path == "-") return av_guess_format("yuv4mpegpipe", nullptr, nullptr);
  if (RawFormatOf(options.path) != AV_PIX_FMT_NONE) return av_guess_format("rawvideo", nullptr, nullptr);
  const AVOutputFormat* muxer = av_guess_format(nullptr, ("x." + Ending(options.path)).c_str(), nullptr);
  if (muxer == nullptr || muxer->video_codec == AV_CODEC_ID_NONE) {
    throw BadUsage("-o", options.path +
                             ": the ending tells no video format; end it in .mp4, .mkv, .y4m, .png, .uyvy, .nv12, .yuv "
                             "or another that FFmpeg knows, or say --format");
  }
  return muxer;
}

const AVCodec* ChooseCodec(const OutputOptions& options, const AVOutputFormat& muxer) {
  if (options.codec.empty()) {
    AVCodecID id = av_guess_codec(&muxer, nullptr, options.path.c_str(), nullptr, AVMEDIA_TYPE_VIDEO);
    if (id == AV_CODEC_ID_MPEG2VIDEO && avformat_query_codec(&muxer, AV_CODEC_ID_H264, FF_COMPLIANCE_NORMAL) != 0) {
      id = AV_CODEC_ID_H264;
    }
    const AVCodec* codec = avcodec_find_encoder(id);
    if (codec != nullptr) return codec;
    throw BadUsage("--codec", std::string("this FFmpeg has no encoder for ") + avcodec_get_name(id) + "; name another");
  }
  const AVCodec* codec = avcodec_find_encoder_by_name(options.codec.c_str());
  if (codec == nullptr) {
    const AVCodecDescriptor* known = avcodec_descriptor_get_by_name(options.codec.c_str());
    if (known != nullptr) codec = avcodec_find_encoder(known->id);
  }
  if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO) {
    throw BadUsage("--codec", "\"" + options.codec + "\" is no video encoder of this FFmpeg; see ffmpeg -encoders");
  }
  if (avformat_query_codec(&muxer, codec->id, FF_COMPLIANCE_NORMAL) == 0) {
    throw BadUsage("--codec", "\"" + options.codec + "\" does not go into a file of format " + muxer.name);
  }
  return codec;
}

bool HasOption(const AVCodec& codec, const char* name) {
  return codec.priv_class != nullptr && av_opt_find(const_cast<const AVClass**>(&codec.priv_class), name, nullptr, 0,
                                                    AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}

}  // namespace

bool KeepsTimes(const AVOutputFormat& muxer) {
  return (muxer.flags & AVFMT_NOTIMESTAMPS) == 0 && std::string(muxer.name) != "yuv4mpegpipe";
}

AVPixelFormat ParsePixelFormat(const std::string& name) {
  const auto found = RawFormats().find(name);
  return found != RawFormats().end() ? found->second : av_get_pix_fmt(name.c_str());
}

AVPixelFormat RawFormatOf(const std::string& path) {
  const auto found = RawFormats().find(Ending(path));
  return found != RawFormats().end() ? found->second : AV_PIX_FMT_NONE;
}

OutputFormat ChooseFormat(const OutputOptions& options) {
  OutputFormat format;
  format.muxer = ChooseMuxer(options);
  format.codec = ChooseCodec(options, *format.muxer);
  format.wanted = options.format != AV_PIX_FMT_NONE ? options.format : RawFormatOf(options.path);
  format.isOnePicture =
      std::string(format.muxer->name) == "image2" && av_filename_number_test(options.path.c_str()) == 0;
  for (const auto& [option, key, isGiven] : {std::tuple{"--crf", "crf", options.crf.has_value()},
                                             std::tuple{"--encoder-preset", "preset", !options.effort.empty()}}) {
    if (isGiven && !HasOption(*format.codec, key)) {
      throw BadUsage(option, std::string("the encoder ") + format.codec->name + " has no such setting");
    }
  }
  return format;
}

AVPixelFormat CodecFormat(const OutputFormat& format, AVPixelFormat source, AVColorRange range) {
  const AVPixelFormat* formats = format.codec->pix_fmts;
  const auto takes = [formats](AVPixelFormat one) {
    for (const AVPixelFormat* next = formats; next != nullptr && *next != AV_PIX_FMT_NONE; ++next) {
      if (*next == one) return true;
    }
    return formats == nullptr;
  };
  if (format.wanted != AV_PIX_FMT_NONE) {
    if (!takes(format.wanted)) {
      throw BadUsage("--output-csp", std::string("the encoder ") + format.codec->name + " does not take " +
                                         av_get_pix_fmt_name(format.wanted));
    }
    return format.wanted;
  }
  // Raw frames, also in Y4M, and lossless ones keep their chroma; players expect 4:2:0 of the rest.
  const bool isLossy = (avcodec_descriptor_get(format.codec->id)->props & AV_CODEC_PROP_LOSSY) != 0;
  const bool isHalved = av_pix_fmt_desc_get(source)->log2_chroma_h > 0;
  const AVPixelFormat planar = isHalved || isLossy ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV422P;
  if (formats == nullptr || takes(planar)) return planar;
  const AVPixelFormat full = planar == AV_PIX_FMT_YUV420P ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUVJ422P;
  if (takes(full) && range == AVCOL_RANGE_JPEG) return full;
  return avcodec_find_best_pix_fmt_of_list(formats, planar, 0, nullptr);
}

}  // namespace vidproc::tool
