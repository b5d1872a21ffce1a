// The processor object's own routes, for those who compare; nothing else in the tool knows that object.
#include <vidproc/video_processor.h>

extern "C" {
#include <libavutil/imgutils.h>
}

#include <chrono>
#include <cstring>
#include <vector>

#include "errors.h"
#include "processing.h"

namespace vidproc::tool {
namespace {

unsigned Unsigned(int value) { return static_cast<unsigned>(value); }

/// An object made by an exported set-up function.
class Handle {
 public:
  explicit Handle(void (*cleanup)(void**)) : cleanup(cleanup) {}
  ~Handle() { cleanup(&object); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  VideoProcessor* operator->() const { return static_cast<VideoProcessor*>(object); }

  void* object = nullptr;

 private:
  void (*cleanup)(void**);
};

using SetUpFunction = decltype(&PreProcInit);

void SetUp(SetUpFunction function, Handle& handle, Size from, Size to, const ObjectOptions& options) {
  const int made = function(&handle.object, Unsigned(from.width), Unsigned(from.height), Unsigned(2 * from.width),
                            Unsigned(to.width), Unsigned(to.height), Unsigned(2 * to.width), Unsigned(options.enhance),
                            Unsigned(options.dither), Unsigned(options.soften));
  if (made == 0 || handle.object == nullptr) {
    throw ToolError(kFailure, "the object refuses to scale from " + ToString(from) + " to " + ToString(to));
  }
}

/// Frames as rows without gaps on both sides of the object.
class ObjectProcessing : public Processing {
 public:
  ObjectProcessing(const FrameShape& shape, AVPixelFormat format)
      : from(shape.source.size), to(shape.output), format(format), sampleAspect(shape.sampleAspect), pool(format, to) {
    if (from.width % 2 != 0 || to.width % 2 != 0) {
      throw ToolError(kUsage, "the object takes even widths only, not " + ToString(from) + " to " + ToString(to));
    }
    in.resize(Bytes(from));
    out.resize(Bytes(to));
  }

  FramePtr Run(const AVFrame& input) override {
    av_image_copy_to_buffer(in.data(), static_cast<int>(in.size()), input.data, input.linesize, format, from.width,
                            from.height, 1);
    const auto start = std::chrono::steady_clock::now();
    Execute();
    nanoseconds = std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
    FramePtr output = pool.Take();
    std::uint8_t* planes[4];
    int strides[4];
    av_image_fill_arrays(planes, strides, out.data(), format, to.width, to.height, 1);
    av_image_copy(output->data, output->linesize, const_cast<const std::uint8_t**>(planes), strides, format, to.width,
                  to.height);
    output->pts = input.pts;
    output->sample_aspect_ratio = sampleAspect;
    SetColour(*output, ColourOf(input));
    return output;
  }

 protected:
  virtual void Execute() = 0;

  Size from, to;
  std::vector<std::uint8_t> in, out;

 private:
  std::size_t Bytes(Size size) const {
    return static_cast<std::size_t>(av_image_get_buffer_size(format, size.width, size.height, 1));
  }

  AVPixelFormat format;
  AVRational sampleAspect;
  FramePool pool;
};

class ObjectPre final : public ObjectProcessing {
 public:
  ObjectPre(const Options& options, const FrameShape& shape)
      : ObjectProcessing(shape, AV_PIX_FMT_UYVY422),
        settings(options.object),
        seed(options.input.seed),
        handle(PreProcCleanup) {
    SetUp(PreProcInit, handle, from, to, settings);
    if (!settings.taps16) return;
    handle->SetTaps(1);
    handle->SetEnhanceFilter(EnhanceLaplacian4, Unsigned(settings.enhance), 7, 128, 0);
  }

 private:
  void Execute() override {
    handle->ditherSeed = static_cast<std::int32_t>(seed++ & 255);
    PreProcExecute(handle.object, in.data(), out.data(), static_cast<unsigned char>(settings.adaptive), settings.taps16,
                   settings.motionSmoothing, static_cast<unsigned char>(settings.temporalStrength),
                   static_cast<unsigned char>(settings.temporalShift), 64, 0);
  }

  ObjectOptions settings;
  std::int64_t seed;
  Handle handle;
};

class ObjectPost final : public ObjectProcessing {
 public:
  ObjectPost(const Options& options, const FrameShape& shape)
      : ObjectProcessing(shape, AV_PIX_FMT_UYVY422),
        settings(options.object),
        seed(options.input.seed),
        handle(PostProcCleanup) {
    SetUp(PostProcInit, handle, from, to, settings);
    if (settings.deblock > 0) handle->SetDeblockTestPattern(0);
  }

 private:
  void Execute() override {
    handle->ditherSeed = static_cast<std::int32_t>(seed++ & 255);
    PostProcExecute(handle.object, in.data(), out.data(), static_cast<unsigned char>(settings.deblock), 64, 0);
  }

  ObjectOptions settings;
  std::int64_t seed;
  Handle handle;
};

class ObjectNv12 final : public ObjectProcessing {
 public:
  explicit ObjectNv12(const FrameShape& shape)
      : ObjectProcessing(shape, AV_PIX_FMT_NV12), handle(VidProc420InterleavedCleanup) {
    if (!VidProc420InterleavedInit(&handle.object, Unsigned(from.width), Unsigned(from.height), Unsigned(to.width),
                                   Unsigned(to.height))) {
      throw ToolError(kFailure, "the object refuses to scale from " + ToString(from) + " to " + ToString(to));
    }
  }

 private:
  static std::uint8_t* Chroma(std::vector<std::uint8_t>& bytes, Size size) {
    return bytes.data() + static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
  }

  void Execute() override {
    VidProc420InterleavedExecute(handle.object, in.data(), Chroma(in, from), out.data(), Chroma(out, to),
                                 Unsigned(from.width), Unsigned(from.height), Unsigned(from.width),
                                 Unsigned(from.width), Unsigned(to.width), Unsigned(to.height), Unsigned(to.width),
                                 Unsigned(to.width), 64, 0);
  }

  Handle handle;
};

}  // namespace

std::unique_ptr<Processing> MakeObjectProcessing(const Options& options, const FrameShape& shape) {
  switch (options.object.kind) {
    case ObjectOptions::Kind::kPre:
      return std::make_unique<ObjectPre>(options, shape);
    case ObjectOptions::Kind::kPost:
      return std::make_unique<ObjectPost>(options, shape);
    default:
      return std::make_unique<ObjectNv12>(shape);
  }
}

}  // namespace vidproc::tool
