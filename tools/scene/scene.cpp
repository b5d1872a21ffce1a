// Brings painted picture and sensor together; see scene.h.
#include "scene/scene.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "scene/moving_picture.h"
#include "scene/sensor.h"

namespace vidproc::scene {
namespace {

constexpr int kLargestSide = 16384;

/// Light on the scene: a lamp goes out 2.2 s into every 6 s and comes back 2 s later.
double LightAt(double seconds) {
  const double phase = std::fmod(seconds, 6.0);
  const double dimmed = std::clamp(std::min(phase - 2.2, 4.2 - phase) / 0.2, 0.0, 1.0);
  return 1 - 0.45 * dimmed;
}

const Settings& Checked(const Settings& settings) {
  const auto fits = [](int side, int least) { return side >= least && side <= kLargestSide; };
  if (!fits(settings.width, 2) || !fits(settings.height, 1)) throw std::invalid_argument("size of the scene");
  if (!(settings.noise >= 0 && settings.noise <= 10)) throw std::invalid_argument("noise of the scene");
  return settings;
}

}  // namespace

std::size_t FrameBytes(Format format, int width, int height) {
  const auto columns = static_cast<std::size_t>(width), rows = static_cast<std::size_t>(height);
  const std::size_t pairs = (columns + 1) / 2;
  if (format == Format::kUyvy) return 4 * pairs * rows;
  return columns * rows + 2 * pairs * ((rows + 1) / 2);
}

struct Scene::State {
  explicit State(const Settings& settings)
      : painted(settings.width, settings.height),
        sensor(settings.width, settings.height, settings.seed, settings.noise) {
    sensor.Capture(painted.Picture(), {0, 0, settings.width, settings.height});
  }

  MovingPicture painted;
  Sensor sensor;
};

Scene::Scene(const Settings& settings) : state(std::make_unique<State>(Checked(settings))) {}
Scene::~Scene() = default;

void Scene::Render(std::int64_t number, Format format, std::uint8_t* bytes) {
  const double seconds = static_cast<double>(number) / kFramesPerSecond;
  state->painted.PaintMoment(seconds);
  for (const Area& area : state->painted.MovingAreas()) state->sensor.Capture(state->painted.Picture(), area);
  state->sensor.ReadOut(number, LightAt(seconds), format, bytes);
}

}  // namespace vidproc::scene
