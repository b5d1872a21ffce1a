// Pre- and post-processing by the library's interface; see processing.h.
#include "processing.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <type_traits>
#include <utility>

namespace vidproc::tool {
namespace {

/// Handle is vidproc::Pre or vidproc::Post.
template <typename Handle, typename HandleOptions>
class InterfaceProcessing final : public Processing {
 public:
  InterfaceProcessing(const HandleOptions& settings, std::int64_t seed, const StreamInfo& input,
                      const FrameShape& frameShape, AVPixelFormat format)
      : Processing(frameShape, input.colour, FramePool(format, frameShape.output)), settings(settings), seed(seed) {
    const AVChromaLocation location = input.colour.chromaLocation;
    this->settings.input = InfoOf(input.format, shape.source.size, location);
    this->settings.output = InfoOf(format, shape.target.size, location);
    Configure();
  }

  std::optional<int> Noise() override {
    if constexpr (std::is_same_v<Handle, vidproc::Pre>) {
      if (settings.denoise_auto > 0) return handle.Noise();
    }
    return std::nullopt;
  }

 private:
  void Process(const AVFrame& input, AVFrame& output) override {
    if (!(shape.target.size == shape.output)) PaintBlack(output);
    if (settings.dither_level > 0) Configure();
    ++frames;
    Time([&] { handle.Process(InputOf(input, shape.source), OutputOf(output, shape.target)); });
  }

  /// The noise of one configuration stays the same; every frame has its own here, and the same in every run.
  void Configure() {
    settings.dither_seed = static_cast<std::int32_t>((seed + frames) & 255);
    tool::Configure(handle, settings);
  }

  static void PaintBlack(AVFrame& frame) {
    const std::ptrdiff_t strides[4] = {frame.linesize[0], frame.linesize[1], frame.linesize[2], 0};
    av_image_fill_black(frame.data, strides, static_cast<AVPixelFormat>(frame.format), frame.color_range, frame.width,
                        frame.height);
  }

  HandleOptions settings;
  std::int64_t seed;
  Handle handle;
  std::int64_t frames = 0;
};

using PreProcessing = InterfaceProcessing<vidproc::Pre, vidproc::PreOptions>;
using PostProcessing = InterfaceProcessing<vidproc::Post, vidproc::PostOptions>;

}  // namespace

Processing::Processing(const FrameShape& shape, const ColourTags& colour, FramePool pool)
    : shape(shape), colour(colour), pool(std::move(pool)) {}

FramePtr Processing::Run(const AVFrame& input) {
  FramePtr output = pool.Take();
  output->pts = input.pts;
  output->sample_aspect_ratio = shape.sampleAspect;
  SetColour(*output, colour);
  Process(input, *output);
  return output;
}

std::unique_ptr<Processing> MakeProcessing(const Options& options, const StreamInfo& input, const FrameShape& shape,
                                           AVPixelFormat outputFormat) {
  const std::int64_t seed = options.input.seed;
  if (options.command == Command::kPre) {
    return std::make_unique<PreProcessing>(options.pre, seed, input, shape, outputFormat);
  }
  return std::make_unique<PostProcessing>(options.post, seed, input, shape, outputFormat);
}

}  // namespace vidproc::tool
