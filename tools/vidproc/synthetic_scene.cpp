// The synthetic camera scene as a source of frames.
#include <cstdint>
#include <vector>

#include "frame_reader.h"
#include "scene/scene.h"

namespace vidproc::tool {
namespace {

class SyntheticScene final : public FrameSource {
 public:
  SyntheticScene(Size size, std::uint32_t seed, double noise)
      : scene({size.width, size.height, seed, noise}),
        bytes(scene::FrameBytes(scene::Format::kUyvy, size.width, size.height)) {
    info.name = "synthetic scene";
    info.size = size;
    info.frameRate = {scene::Scene::kFramesPerSecond, 1};
    info.timeBase = {1, scene::Scene::kFramesPerSecond};
    info.sampleAspect = {1, 1};
    info.colour = {AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709, AVCHROMA_LOC_LEFT};
  }

  bool Next(AVFrame& frame) override {
    scene.Render(frames, scene::Format::kUyvy, bytes.data());
    DescribeFrame(info, AV_PIX_FMT_UYVY422, bytes.data(), frames++, frame);
    return true;
  }

 private:
  scene::Scene scene;
  std::vector<std::uint8_t> bytes;
  std::int64_t frames = 0;
};

}  // namespace

std::unique_ptr<FrameSource> OpenSyntheticScene(Size size, std::uint32_t seed, double noise) {
  return std::make_unique<SyntheticScene>(size, seed, noise);
}

}  // namespace vidproc::tool
