// The tasks of docs/start.md in C++, on frames that somebody else makes.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <vector>
#include <vidproc/vidproc.hpp>

namespace {

using Bytes = std::vector<std::uint8_t>;

int PrepareForEncoder() {
  // The camera delivers packed YUYV, the encoder takes I420 of half the size.
  vidproc::PreOptions options("webcam");
  options.input = {VIDPROC_FORMAT_YUYV, 1280, 720, VIDPROC_SITING_LEFT};
  options.output = {VIDPROC_FORMAT_I420, 640, 360, VIDPROC_SITING_LEFT};
  vidproc::Pre pre(options);

  Bytes camera(vidproc::FrameBytes(options.input), 128), encoder(vidproc::FrameBytes(options.output));
  const vidproc::Input input = vidproc::InputOver(options.input, camera);
  const vidproc::Output output = vidproc::OutputOver(options.output, encoder);
  pre.Process(input, output);  // for every frame

  pre.Reset();  // after a cut: the next frame has no past

  options.output.width = 960;  // when the bandwidth allows more
  options.output.height = 540;
  pre.Configure(options);
  return encoder[0];
}

int PrepareForScreen() {
  // The decoder delivers I420, the screen takes UYVY of twice the size.
  vidproc::PostOptions options("camera");
  options.input = {VIDPROC_FORMAT_I420, 640, 360, VIDPROC_SITING_LEFT};
  options.output = {VIDPROC_FORMAT_UYVY, 1280, 720, VIDPROC_SITING_LEFT};
  vidproc::Post post(options);

  Bytes decoded(vidproc::FrameBytes(options.input), 128), screen(vidproc::FrameBytes(options.output));
  post.Process(vidproc::InputOver(options.input, decoded), vidproc::OutputOver(options.output, screen));
  return screen[1];
}

int WatchExposure() {
  vidproc::ExposureOptions options;
  options.input = {VIDPROC_FORMAT_NV12, 640, 360, VIDPROC_SITING_LEFT};
  vidproc::Exposure exposure(options);

  Bytes camera(vidproc::FrameBytes(options.input), 128);
  int settledAt = -1;
  for (int frame = 0; frame < 60; ++frame) {
    const vidproc_exposure_event event = exposure.Process(vidproc::InputOver(options.input, camera));
    if (event == VIDPROC_EXPOSURE_SETTLED) settledAt = frame;  // brightness has come to rest
    if (event == VIDPROC_EXPOSURE_DRIFTED) settledAt = -1;     // the camera should adjust itself
  }
  return settledAt;
}

void ShowRefusal() {
  try {
    vidproc::PreOptions options("webcam");
    options.input = {VIDPROC_FORMAT_I420, 1280, 720, VIDPROC_SITING_LEFT};
    options.output = {VIDPROC_FORMAT_I420, 1, 360, VIDPROC_SITING_LEFT};
    vidproc::Pre pre(options);
  } catch (const vidproc::Error& error) {
    std::puts(error.what());  // invalid argument: output.width is 1, allowed 2 to 16384
  }
}

}  // namespace

int main() try {
  ShowRefusal();
  const int settledAt = WatchExposure();
  std::printf("the brightness of a grey wall settles at frame %d\n", settledAt);
  const int encoded = PrepareForEncoder(), shown = PrepareForScreen();
  std::printf("a luma sample in the middle: %d before encoding, %d on the screen\n", encoded, shown);
  return encoded == 128 && shown == 128 && settledAt >= 20 ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
