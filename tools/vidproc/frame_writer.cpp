// The writers that need no encoder, and the choice among all; see frame_writer.h.
#include "frame_writer.h"

#include <filesystem>
#include <vector>

#include "errors.h"
#include "image.h"
#include "picture_converter.h"

namespace vidproc::tool {
namespace {

std::string Ending(const std::string& path) {
  return path == "-" ? ".y4m" : std::filesystem::path(path).extension().string();
}

class RawWriter final : public FrameWriter {
 public:
  using FrameWriter::FrameWriter;
  void Write(const Picture& picture) override { file.Write(picture.bytes.data(), picture.bytes.size()); }
};

class Y4mWriter final : public FrameWriter {
 public:
  Y4mWriter(const std::string& path, const StreamInfo& info, Layout layout) : FrameWriter(path) {
    const bool centred = info.colour.chromaLocation == AVCHROMA_LOC_CENTER;
    const std::string chroma = layout == Layout::kUyvy ? "C422" : centred ? "C420jpeg" : "C420mpeg2";
    file.Write("YUV4MPEG2 W" + std::to_string(info.size.width) + " H" + std::to_string(info.size.height) + " F" +
               Ratio(info.frameRate) + " Ip A" +
               Ratio(info.sampleAspect.num > 0 ? info.sampleAspect : AVRational{0, 0}) + " " + chroma +
               " XCOLORRANGE=LIMITED\n");
  }

  void Write(const Picture& picture) override {
    ToPlanar(picture, planes);
    file.Write("FRAME\n");
    file.Write(planes.data(), planes.size());
  }

 private:
  static std::string Ratio(AVRational ratio) { return std::to_string(ratio.num) + ":" + std::to_string(ratio.den); }

  std::vector<std::uint8_t> planes;
};

class PngWriter final : public FrameWriter {
 public:
  PngWriter(const std::string& path, const StreamInfo& info) : FrameWriter(path), info(info) {}
  void Write(const Picture& picture) override { last = picture; }
  void Finish() override {
    WritePng(file, ToCanvas(*WrapPicture(last, info)));
    FrameWriter::Finish();
  }

 private:
  StreamInfo info;
  Picture last;
};

}  // namespace

bool WritesOneFrame(const std::string& path) { return Ending(path) == ".png"; }

void CheckOutputName(const std::string& path, Layout layout) {
  const std::string ending = Ending(path);
  const std::string raw = layout == Layout::kUyvy ? ".uyvy" : ".nv12";
  if (ending == (layout == Layout::kUyvy ? ".nv12" : ".uyvy")) {
    throw BadUsage("-o", path + ": this command makes " + raw.substr(1) + " frames; raw output ends in " + raw);
  }
  for (const char* known : {".y4m", ".mkv", ".mp4", ".png", raw.c_str()}) {
    if (ending == known) return;
  }
  throw BadUsage("-o", path + ": the name must end in .y4m, .mkv, .mp4, .png or " + raw + ", or be - for Y4M");
}

void CheckOutputSize(const std::string& path, Size size) {
  if (Ending(path) == ".mp4" && (size.width % 2 != 0 || size.height % 2 != 0)) {
    throw BadUsage("--size",
                   "an .mp4 needs an even width and height, not " + ToString(size) + "; .mkv and .y4m do not");
  }
}

std::unique_ptr<FrameWriter> OpenWriter(const std::string& path, const StreamInfo& info, Layout layout) {
  const std::string ending = Ending(path);
  if (ending == ".y4m") return std::make_unique<Y4mWriter>(path, info, layout);
  if (ending == ".png") return std::make_unique<PngWriter>(path, info);
  if (ending == ".mkv" || ending == ".mp4") return OpenEncoder(path, info, layout);
  return std::make_unique<RawWriter>(path);
}

}  // namespace vidproc::tool
