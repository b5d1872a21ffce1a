// Sources that need no decoder: Y4M and raw frames, from a file or from standard input.
extern "C" {
#include <libavutil/imgutils.h>
}

#include <charconv>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "errors.h"
#include "file_io.h"
#include "frame_reader.h"

namespace vidproc::tool {
namespace {

/// Frames of fixed size that follow each other, each behind an optional header.
class PlainSource : public FrameSource {
 public:
  explicit PlainSource(const std::string& path) : file(path) { info.name = file.Name(); }

  bool Next(AVFrame& frame) override {
    if (!SkipFrameHeader()) return false;
    const std::size_t got = file.Read(bytes.data(), bytes.size());
    if (got == 0 && !headed) return false;
    if (got < bytes.size()) {
      throw CannotRead(info.name, "it is truncated: frame " + std::to_string(frames) + " has " + std::to_string(got) +
                                      " of " + std::to_string(bytes.size()) + " bytes");
    }
    DescribeFrame(info, format, bytes.data(), frames++, frame);
    frame.color_range = range;
    return true;
  }

 protected:
  virtual bool SkipFrameHeader() { return true; }

  void Layout(AVPixelFormat newFormat) {
    format = newFormat;
    const int size = av_image_get_buffer_size(format, info.size.width, info.size.height, 1);
    if (size <= 0) throw CannotRead(info.name, "impossible frame size " + ToString(info.size));
    bytes.resize(static_cast<std::size_t>(size));
  }

  InputFile file;
  AVPixelFormat format = AV_PIX_FMT_NONE;
  AVColorRange range = AVCOL_RANGE_MPEG;
  std::vector<std::uint8_t> bytes;
  std::int64_t frames = 0;
  bool headed = false;
};

class RawSource final : public PlainSource {
 public:
  RawSource(const std::string& path, const std::string& formatName, Size size) : PlainSource(path) {
    info.size = size;
    Layout(formatName == "nv12" ? AV_PIX_FMT_NV12 : AV_PIX_FMT_UYVY422);
    info.frameCount = file.Size() / static_cast<std::int64_t>(bytes.size());
  }
};

class Y4mSource final : public PlainSource {
 public:
  explicit Y4mSource(const std::string& path) : PlainSource(path) {
    headed = true;
    std::string header;
    if (!file.ReadLine(header, kMaxHeader) || !header.starts_with("YUV4MPEG2")) {
      throw CannotRead(info.name, "it is not a Y4M stream (it does not begin with YUV4MPEG2)");
    }
    std::string chroma = "420jpeg";
    for (std::size_t begin = header.find(' '); begin != std::string::npos; begin = header.find(' ', begin + 1)) {
      const std::string field = header.substr(begin + 1, header.find(' ', begin + 1) - begin - 1);
      if (!field.empty()) ReadField(field[0], field.substr(1), chroma);
    }
    if (info.size.width < 1 || info.size.height < 1 || info.size.width > kMaxSize || info.size.height > kMaxSize) {
      throw CannotRead(info.name, "impossible frame size in its header: \"" + header + "\"");
    }
    Layout(ChromaFormat(chroma));
    info.timeBase = av_inv_q(info.frameRate);
    info.frameCount = file.Size() / static_cast<std::int64_t>(bytes.size() + 6);
  }

 private:
  static constexpr std::size_t kMaxHeader = 4096;
  static constexpr int kMaxSize = 16384;

  int Number(const std::string& text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
      throw CannotRead(info.name, "bad number \"" + text + "\" in its Y4M header");
    }
    return value;
  }

  AVRational Ratio(const std::string& text, AVRational fallback) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) throw CannotRead(info.name, "bad ratio \"" + text + "\" in its Y4M header");
    const AVRational ratio{Number(text.substr(0, colon)), Number(text.substr(colon + 1))};
    return ratio.num > 0 && ratio.den > 0 ? ratio : fallback;
  }

  void ReadField(char kind, const std::string& value, std::string& chroma) {
    switch (kind) {
      case 'W':
        info.size.width = Number(value);
        break;
      case 'H':
        info.size.height = Number(value);
        break;
      case 'F':
        info.frameRate = Ratio(value, info.frameRate);
        break;
      case 'A':
        info.sampleAspect = Ratio(value, {0, 1});
        break;
      case 'C':
        chroma = value;
        break;
      case 'X':
        if (value == "COLORRANGE=FULL") range = AVCOL_RANGE_JPEG;
        break;
      default:
        break;
    }
  }

  AVPixelFormat ChromaFormat(const std::string& chroma) {
    static const std::map<std::string, std::pair<AVPixelFormat, AVChromaLocation>> kFormats = {
        {"420", {AV_PIX_FMT_YUV420P, AVCHROMA_LOC_CENTER}},
        {"420jpeg", {AV_PIX_FMT_YUV420P, AVCHROMA_LOC_CENTER}},
        {"420mpeg2", {AV_PIX_FMT_YUV420P, AVCHROMA_LOC_LEFT}},
        {"420paldv", {AV_PIX_FMT_YUV420P, AVCHROMA_LOC_TOPLEFT}},
        {"411", {AV_PIX_FMT_YUV411P, AVCHROMA_LOC_LEFT}},
        {"422", {AV_PIX_FMT_YUV422P, AVCHROMA_LOC_LEFT}},
        {"444", {AV_PIX_FMT_YUV444P, AVCHROMA_LOC_UNSPECIFIED}},
        {"mono", {AV_PIX_FMT_GRAY8, AVCHROMA_LOC_UNSPECIFIED}},
        {"420p10", {AV_PIX_FMT_YUV420P10LE, AVCHROMA_LOC_LEFT}},
        {"422p10", {AV_PIX_FMT_YUV422P10LE, AVCHROMA_LOC_LEFT}},
        {"444p10", {AV_PIX_FMT_YUV444P10LE, AVCHROMA_LOC_UNSPECIFIED}},
    };
    const auto found = kFormats.find(chroma);
    if (found == kFormats.end()) throw CannotRead(info.name, "Y4M chroma format C" + chroma + " is not supported");
    info.colour.chromaLocation = found->second.second;
    return found->second.first;
  }

  bool SkipFrameHeader() override {
    std::string line;
    if (!file.ReadLine(line, kMaxHeader)) return false;
    if (!line.starts_with("FRAME")) {
      throw CannotRead(info.name, "no FRAME marker where frame " + std::to_string(frames) + " should begin");
    }
    return true;
  }
};

}  // namespace

std::unique_ptr<FrameSource> OpenY4m(const std::string& path) { return std::make_unique<Y4mSource>(path); }

std::unique_ptr<FrameSource> OpenRaw(const std::string& path, const std::string& format, Size size) {
  return std::make_unique<RawSource>(path, format, size);
}

}  // namespace vidproc::tool
