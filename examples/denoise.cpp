// Cleans a camera's frames and halves them for an encoder.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>
#include <vidproc/vidproc.hpp>

int main() try {
  vidproc::PreOptions options("webcam");
  options.input = {VIDPROC_FORMAT_I420, 1280, 720, VIDPROC_SITING_LEFT};
  options.output = {VIDPROC_FORMAT_NV12, 640, 360, VIDPROC_SITING_LEFT};
  vidproc::Pre pre(options);

  std::vector<std::uint8_t> camera(vidproc::FrameBytes(options.input));
  std::vector<std::uint8_t> encoder(vidproc::FrameBytes(options.output));
  const vidproc::Input input = vidproc::InputOver(options.input, camera);
  const vidproc::Output output = vidproc::OutputOver(options.output, encoder);
  for (int frame = 0; frame < 3; ++frame) {
    std::fill(camera.begin(), camera.end(), static_cast<std::uint8_t>(100 + frame));  // here the camera delivers
    pre.Process(input, output);
  }
  std::printf("a luma sample in the middle: %d\n", encoder[640 * 180 + 320]);
} catch (const vidproc::Error& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
