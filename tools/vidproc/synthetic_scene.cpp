// The synthetic camera scene as a source of frames.
#include <cstdint>

#include "frame_reader.h"
#include "library_frame.h"
#include "scene/scene.h"

namespace vidproc::tool {
namespace {

class SyntheticScene final : public FrameSource {
 public:
  SyntheticScene(Size size, std::uint32_t seed, double noise)
      : scene({size.width, size.height, seed, noise}), pool(AV_PIX_FMT_UYVY422, size, 1) {
    info.name = "synthetic scene";
    info.frameRate = {scene::Scene::kFramesPerSecond, 1};
    info.timeBase = {1, scene::Scene::kFramesPerSecond};
    info.sampleAspect = {1, 1};
  }

  bool Next(AVFrame& frame) override {
    const FramePtr picture = pool.Take();
    scene.Render(frames, scene::Format::kUyvy, picture->data[0]);
    picture->pts = frames++;
    SetColour(*picture, {AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709, AVCHROMA_LOC_LEFT});
    av_frame_move_ref(&frame, picture.get());
    return true;
  }

 private:
  scene::Scene scene;
  FramePool pool;
  std::int64_t frames = 0;
};

}  // namespace

std::unique_ptr<FrameSource> OpenSyntheticScene(Size size, std::uint32_t seed, double noise) {
  return std::make_unique<SyntheticScene>(size, seed, noise);
}

}  // namespace vidproc::tool
