// The processor object's own routes, for those who compare; nothing else in the tool knows that object.
#include <vidproc/video_processor.h>

extern "C" {
#include <libavutil/imgutils.h>
}

#include <vector>

#include "errors.h"
#include "processing.h"

namespace vidproc::tool {
namespace {

unsigned Unsigned(int value) { return static_cast<unsigned>(value); }
unsigned char Byte(int value) { return static_cast<unsigned char>(value); }

/// Frames are rows without gaps on both sides of the object, which may write to its input.
class ObjectProcessing final : public Processing {
 public:
  ObjectProcessing(const Options& options, const StreamInfo& input, const FrameShape& frameShape)
      : Processing(frameShape, input.colour, FramePool(input.format, frameShape.output, 1)),
        command(options.command),
        settings(options.object),
        seed(options.input.seed),
        from(shape.source.size),
        to(shape.output) {
    const std::string sizes = ToString(from) + " to " + ToString(to);
    if (from.width % 2 != 0 || to.width % 2 != 0) {
      throw ToolError(kUsage, "the object takes even widths only, not " + sizes);
    }
    if (!SetUp()) throw ToolError(kFailure, "the object refuses to scale from " + sizes);
    in.resize(static_cast<std::size_t>(av_image_get_buffer_size(input.format, from.width, from.height, 1)));
  }
  ~ObjectProcessing() override {
    const auto cleanup = command == Command::kObjectPre    ? PreProcCleanup
                         : command == Command::kObjectPost ? PostProcCleanup
                                                           : VidProc420InterleavedCleanup;
    cleanup(&handle);
  }
  ObjectProcessing(const ObjectProcessing&) = delete;
  ObjectProcessing& operator=(const ObjectProcessing&) = delete;

 private:
  VideoProcessor& Object() { return *static_cast<VideoProcessor*>(handle); }

  bool SetUp() {
    if (command == Command::kObjectNv12) {
      return VidProc420InterleavedInit(&handle, Unsigned(from.width), Unsigned(from.height), Unsigned(to.width),
                                       Unsigned(to.height)) != 0;
    }
    const auto init = command == Command::kObjectPre ? PreProcInit : PostProcInit;
    const int made = init(&handle, Unsigned(from.width), Unsigned(from.height), Unsigned(2 * from.width),
                          Unsigned(to.width), Unsigned(to.height), Unsigned(2 * to.width), Unsigned(settings.enhance),
                          Unsigned(settings.dither), Unsigned(settings.soften));
    if (made == 0 || handle == nullptr) return false;
    if (settings.taps16) {
      Object().SetTaps(1);
      Object().SetEnhanceFilter(EnhanceLaplacian4, Unsigned(settings.enhance), 7, 128, 0);
    }
    if (settings.deblock > 0) Object().SetDeblockTestPattern(0);
    return true;
  }

  void Process(const AVFrame& input, AVFrame& output) override {
    av_image_copy_to_buffer(in.data(), static_cast<int>(in.size()), input.data, input.linesize,
                            static_cast<AVPixelFormat>(input.format), from.width, from.height, 1);
    if (command != Command::kObjectNv12) Object().ditherSeed = static_cast<std::int32_t>(seed++ & 255);
    Time([&] { Execute(output.data); });
  }

  void Execute(std::uint8_t* const* out) {
    if (command == Command::kObjectPre) {
      PreProcExecute(handle, in.data(), out[0], Byte(settings.adaptive), settings.taps16, settings.motionSmoothing,
                     Byte(settings.temporalStrength), Byte(settings.temporalShift), 64, 0);
    } else if (command == Command::kObjectPost) {
      PostProcExecute(handle, in.data(), out[0], Byte(settings.deblock), 64, 0);
    } else {
      std::uint8_t* const chroma = in.data() + std::ptrdiff_t{from.width} * from.height;
      VidProc420InterleavedExecute(
          handle, in.data(), chroma, out[0], out[1], Unsigned(from.width), Unsigned(from.height), Unsigned(from.width),
          Unsigned(from.width), Unsigned(to.width), Unsigned(to.height), Unsigned(to.width), Unsigned(to.width), 64, 0);
    }
  }

  const Command command;
  const ObjectOptions settings;
  std::int64_t seed;
  const Size from, to;
  std::vector<std::uint8_t> in;
  void* handle = nullptr;
};

}  // namespace

std::unique_ptr<Processing> MakeObjectProcessing(const Options& options, const StreamInfo& input,
                                                 const FrameShape& shape) {
  return std::make_unique<ObjectProcessing>(options, input, shape);
}

}  // namespace vidproc::tool
