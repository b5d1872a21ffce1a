// The sending side of a call: one thread captures, one processes, one encodes. Frames go round between them, so that
// no frame is allocated while the call lasts, and a thread that is late holds up the one before it.
#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>
#include <vidproc/vidproc.hpp>

namespace {

constexpr int kFrames = 3, kCallLength = 30;

using Frame = std::vector<std::uint8_t>;

/// Frames on their way from one thread to another; an empty one is the end of the call.
class Queue {
 public:
  void Push(Frame frame) {
    const std::lock_guard<std::mutex> lock(mutex);
    frames.push_back(std::move(frame));
    arrival.notify_one();
  }
  Frame Pop() {
    std::unique_lock<std::mutex> lock(mutex);
    arrival.wait(lock, [this] { return !frames.empty(); });
    Frame frame = std::move(frames.front());
    frames.pop_front();
    return frame;
  }

 private:
  std::mutex mutex;
  std::condition_variable arrival;
  std::deque<Frame> frames;
};

struct Call {
  explicit Call(const vidproc::PreOptions& settings) : options(settings), pre(settings) {
    for (int i = 0; i < kFrames; ++i) {
      toFill.Push(Frame(vidproc::FrameBytes(options.input)));
      toEncodeInto.Push(Frame(vidproc::FrameBytes(options.output)));
    }
  }

  void Capture() {
    for (int number = 0; number < kCallLength; ++number) {
      Frame frame = toFill.Pop();
      std::fill(frame.begin(), frame.end(), static_cast<std::uint8_t>(100 + number));  // here the camera delivers
      captured.Push(std::move(frame));
    }
    captured.Push({});
  }

  /// A frame that is refused is left out; the call goes on.
  void Process() {
    for (Frame in = captured.Pop(); !in.empty(); in = captured.Pop()) {
      Frame out = toEncodeInto.Pop();
      try {
        pre.Process(vidproc::InputOver(options.input, in), vidproc::OutputOver(options.output, out));
        processed.Push(std::move(out));
      } catch (const vidproc::Error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        toEncodeInto.Push(std::move(out));
      }
      toFill.Push(std::move(in));
    }
    processed.Push({});
  }

  void Encode() {
    for (Frame frame = processed.Pop(); !frame.empty(); frame = processed.Pop()) {
      brightness = frame[640 * 180 + 320];  // here the encoder takes the frame
      toEncodeInto.Push(std::move(frame));
    }
  }

  vidproc::PreOptions options;
  vidproc::Pre pre;
  Queue toFill, captured, toEncodeInto, processed;
  int brightness = -1;
};

}  // namespace

int main() try {
  vidproc::PreOptions options("webcam");
  options.input = {VIDPROC_FORMAT_YUYV, 1280, 720, VIDPROC_SITING_LEFT};
  options.output = {VIDPROC_FORMAT_NV12, 640, 360, VIDPROC_SITING_LEFT};
  Call call(options);
  std::thread camera([&] { call.Capture(); }), encoder([&] { call.Encode(); });
  call.Process();
  camera.join();
  encoder.join();
  std::printf("a luma sample in the middle: %d\n", call.brightness);
  return call.brightness > 0 ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
