// Pre- and post-processing by the library's interface; see processing.h.
#include "processing.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <chrono>
#include <string>
#include <type_traits>

#include "errors.h"

namespace vidproc::tool {
namespace {

template <typename Work>
std::int64_t Timed(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start).count();
}

/// Handle is vidproc::Pre or vidproc::Post.
template <typename Handle, typename HandleOptions>
class InterfaceProcessing final : public Processing {
 public:
  InterfaceProcessing(HandleOptions settings, std::int64_t seed, const StreamInfo& input, const FrameShape& shape,
                      AVPixelFormat format)
      : settings(settings), seed(seed), shape(shape), colour(input.colour), pool(format, shape.output) {
    const AVChromaLocation location = input.colour.chromaLocation;
    this->settings.input = InfoOf(input.format, shape.source.size, location);
    this->settings.output = InfoOf(format, shape.target.size, location);
    Configure();
  }

  FramePtr Run(const AVFrame& input) override {
    FramePtr output = pool.Take();
    output->pts = input.pts;
    output->sample_aspect_ratio = shape.sampleAspect;
    SetColour(*output, colour);
    if (!(shape.target.size == shape.output)) PaintBlack(*output);
    if (settings.dither_level > 0) Configure();
    ++frames;
    nanoseconds = Timed([&] { handle.Process(InputOf(input, shape.source), OutputOf(*output, shape.target)); });
    return output;
  }

  std::optional<int> Noise() override {
    if constexpr (std::is_same_v<Handle, vidproc::Pre>) {
      if (settings.denoise_auto > 0) return handle.Noise();
    }
    return std::nullopt;
  }

 private:
  /// The noise of one configuration stays the same; every frame has its own here, and the same in every run.
  void Configure() {
    settings.dither_seed = static_cast<std::int32_t>((seed + frames) & 255);
    try {
      handle.Configure(settings);
    } catch (const vidproc::Error& error) {
      if (error.Status() == VIDPROC_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
      throw ToolError(kUsage, std::string("these settings are refused: ") + error.what());
    }
  }

  static void PaintBlack(AVFrame& frame) {
    const std::ptrdiff_t strides[4] = {frame.linesize[0], frame.linesize[1], frame.linesize[2], 0};
    av_image_fill_black(frame.data, strides, static_cast<AVPixelFormat>(frame.format), frame.color_range, frame.width,
                        frame.height);
  }

  HandleOptions settings;
  std::int64_t seed;
  FrameShape shape;
  ColourTags colour;
  FramePool pool;
  Handle handle;
  std::int64_t frames = 0;
};

}  // namespace

std::unique_ptr<Processing> MakeProcessing(const Options& options, const StreamInfo& input, const FrameShape& shape,
                                           AVPixelFormat outputFormat) {
  const std::int64_t seed = options.input.seed;
  if (options.command == Command::kPre) {
    return std::make_unique<InterfaceProcessing<vidproc::Pre, vidproc::PreOptions>>(options.pre, seed, input, shape,
                                                                                    outputFormat);
  }
  return std::make_unique<InterfaceProcessing<vidproc::Post, vidproc::PostOptions>>(options.post, seed, input, shape,
                                                                                    outputFormat);
}

}  // namespace vidproc::tool
