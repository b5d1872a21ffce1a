// bench: how many streams one core and the whole machine carry, each stream with a handle of its own.
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <future>
#include <string>
#include <vector>

#include "commands.h"
#include "errors.h"
#include "processing.h"
#include "scene/scene.h"

namespace vidproc::tool {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using Bytes = std::vector<std::uint8_t>;

constexpr int kFrameRate = scene::Scene::kFramesPerSecond;

/// What all streams get: I420.
class Camera {
 public:
  Camera(const FrameInfo& info, double noise) : info(info) {
    scene::Scene scene({info.width, info.height, 1, noise});
    for (std::size_t number = 0; number < kPictures; ++number) {
      scene.Render(static_cast<std::int64_t>(number), scene::Format::kI420,
                   pictures.emplace_back(FrameBytes(info)).data());
    }
  }

  /// The pictures forth and back: no cut, at which denoising would begin anew.
  Input Frame(std::size_t number) const {
    const std::size_t place = number % (2 * kPictures - 2);
    return InputOver(info, pictures[std::min(place, 2 * kPictures - 2 - place)]);
  }

 private:
  static constexpr std::size_t kPictures = 8;
  FrameInfo info;
  std::vector<Bytes> pictures;
};

/// A processor and the streams that a thread pinned to it takes turns on.
class Core {
 public:
  Core(int processor, const Camera& camera, const PreOptions& settings)
      : processor(processor), camera(camera), settings(settings), encoder(FrameBytes(settings.output)) {}

  /// Keeps the calling thread on the processor.
  void Pin() const {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    if (sched_setaffinity(0, sizeof(one), &one) != 0) {
      throw ToolError(kFailure, "cannot stay on processor " + std::to_string(processor));
    }
  }

  /// By the thread that runs it, which places its memory near on machines where that matters.
  void SetUp(int streams) {
    handles.resize(static_cast<std::size_t>(streams));
    for (Pre& handle : handles) Configure(handle, settings);
    ProcessRound();  // the first touch of the handles' memory is not timed
    times.clear();
  }

  void Run(double seconds) {
    const Clock::time_point start = Clock::now();
    double elapsed = 0;
    while (elapsed < 1000 * seconds) {
      ProcessRound();
      elapsed = Milliseconds(Clock::now() - start).count();
    }
    framesPerSecond = 1000 * static_cast<double>(times.size()) / elapsed;
  }

  double FramesPerSecond() const { return framesPerSecond; }
  int Carried() const { return static_cast<int>(framesPerSecond / kFrameRate); }
  /// Milliseconds of every frame.
  const std::vector<double>& Times() const { return times; }

 private:
  /// A frame of each stream; the encoder takes it before the next one comes.
  void ProcessRound() {
    const Output output = OutputOver(settings.output, encoder);
    for (std::size_t stream = 0; stream < handles.size(); ++stream) {
      const Input input = camera.Frame(round + stream);
      const Clock::time_point start = Clock::now();
      handles[stream].Process(input, output);
      times.push_back(Milliseconds(Clock::now() - start).count());
    }
    ++round;
  }

  int processor;
  const Camera& camera;
  const PreOptions& settings;
  Bytes encoder;
  std::vector<Pre> handles;
  std::size_t round = 0;
  std::vector<double> times;
  double framesPerSecond = 0;
};

/// Those that this process may run on.
std::vector<int> Processors() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0) throw ToolError(kFailure, "cannot list the processors");
  std::vector<int> processors;
  for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
    if (CPU_ISSET(processor, &allowed)) processors.push_back(processor);
  }
  return processors;
}

/// `work` on all cores at once.
template <typename Work>
void OnEach(std::vector<Core>& cores, Work work) {
  std::vector<std::future<void>> threads;
  threads.reserve(cores.size());
  for (Core& core : cores) {
    threads.push_back(std::async(std::launch::async, [&work, &core] {
      core.Pin();
      work(core);
    }));
  }
  for (std::future<void>& thread : threads) thread.get();
}

std::vector<Core> RunCores(const std::vector<int>& processors, const Camera& camera, const PreOptions& settings,
                           int streams, double seconds) {
  std::vector<Core> cores;
  cores.reserve(processors.size());
  for (const int processor : processors) cores.emplace_back(processor, camera, settings);
  OnEach(cores, [streams](Core& core) { core.SetUp(streams); });
  OnEach(cores, [seconds](Core& core) { core.Run(seconds); });
  return cores;
}

void PrintRow(const std::vector<Core>& cores) {
  int carried = 0;
  double framesPerSecond = 0;
  std::vector<double> times;
  for (const Core& core : cores) {
    carried += core.Carried();
    framesPerSecond += core.FramesPerSecond();
    times.insert(times.end(), core.Times().begin(), core.Times().end());
  }
  std::sort(times.begin(), times.end());
  const auto late = times.end() - std::upper_bound(times.begin(), times.end(), 1000.0 / kFrameRate);
  std::printf("%5zu %8d %9.0f %10.3f %9.3f %5td\n", cores.size(), carried, framesPerSecond, times[times.size() / 2],
              times.back(), late);
}

}  // namespace

void RunBench(const Options& options) {
  const Size size = options.input.syntheticSize;
  const Size target = options.output.size.width > 0 ? options.output.size : size;
  PreOptions settings = options.pre;
  settings.input = {VIDPROC_FORMAT_I420, size.width, size.height, VIDPROC_SITING_LEFT};
  settings.output = {VIDPROC_FORMAT_I420, target.width, target.height, VIDPROC_SITING_LEFT};
  const Camera camera(settings.input, static_cast<double>(options.input.syntheticNoise) / 100);
  const std::vector<int> all = Processors(), first(all.begin(), all.begin() + 1);

  const auto run = [&](const std::vector<int>& processors, int streams, double seconds) {
    return RunCores(processors, camera, settings, streams, seconds);
  };
  // One handle alone runs from the caches and says too much: its rate is the number of handles to measure with.
  const int streams =
      options.streams > 0 ? options.streams : std::max(1, run(first, 1, options.seconds / 5)[0].Carried());
  const std::vector<Core> one = run(first, streams, options.seconds);
  std::printf("%s to %s at %d frames/s, %s, %d handles a core, %g s\n", ToString(size).c_str(),
              ToString(target).c_str(), kFrameRate, vidproc_level(), streams, options.seconds);
  std::printf("cores  streams  frames/s  median ms  worst ms  late\n");
  PrintRow(one);
  if (all.size() > 1) PrintRow(run(all, streams, options.seconds));
}

}  // namespace vidproc::tool
