// SPDX-License-Identifier: GPL-2.0-or-later
#include "studio.h"

#include <X11/Xlib.h>
#include <obs-nix-platform.h>

#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>

#include "allocation_count.h"

namespace vidproc_obs_tests {
namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t kSecond = 1'000'000'000;
constexpr int kPlanes = 3;

std::mutex mutex;  ///< of all below
std::condition_variable arrival;
Bytes arrived;
bool hasArrived = false;
long blocksBefore = 0, blocksOfLastFrame = 0;
std::string logged;

Display* display = nullptr;

std::uint32_t RowsOf(const obs_source_frame& frame, int plane) {
  const bool isHalved = plane > 0 && (frame.format == VIDEO_FORMAT_I420 || frame.format == VIDEO_FORMAT_NV12);
  return isHalved ? (frame.height + 1) / 2 : frame.height;
}

/// Calls visit(bytes of the plane, how many) for each.
template <typename Visit>
void VisitPlanes(const obs_source_frame& frame, const Visit& visit) {
  for (int p = 0; p < kPlanes && frame.linesize[p] != 0; ++p) {
    visit(frame.data[p], std::size_t{frame.linesize[p]} * RowsOf(frame, p));
  }
}

Bytes BytesOf(const obs_source_frame& frame) {
  Bytes bytes;
  VisitPlanes(frame,
              [&](const std::uint8_t* plane, std::size_t count) { bytes.insert(bytes.end(), plane, plane + count); });
  return bytes;
}

/// A frame of libobs's own kind, filled with noise.
struct NoisyFrame {
  NoisyFrame(const Shape& shape, unsigned number)
      : frame(obs_source_frame_create(shape.format.source, static_cast<std::uint32_t>(shape.width),
                                      static_cast<std::uint32_t>(shape.height))) {
    std::minstd_rand random(number + 1);
    VisitPlanes(*frame, [&](std::uint8_t* plane, std::size_t count) {
      for (std::size_t i = 0; i < count; ++i) plane[i] = static_cast<std::uint8_t>(60 + random() % 40);
    });
    video_format_get_parameters(VIDEO_CS_709, VIDEO_RANGE_PARTIAL, frame->color_matrix, frame->color_range_min,
                                frame->color_range_max);
  }
  NoisyFrame(const NoisyFrame&) = delete;
  NoisyFrame& operator=(const NoisyFrame&) = delete;
  ~NoisyFrame() { obs_source_frame_destroy(frame); }

  obs_source_frame* frame;
};

obs_source_frame* NoteBefore(void* /*watcher*/, obs_source_frame* frame) {
  const std::lock_guard lock(mutex);
  blocksBefore = TakenBlocks();
  return frame;
}

obs_source_frame* NoteAfter(void* /*watcher*/, obs_source_frame* frame) {
  const std::lock_guard lock(mutex);
  blocksOfLastFrame = TakenBlocks() - blocksBefore;
  arrived = BytesOf(*frame);
  hasArrived = true;
  arrival.notify_all();
  return frame;
}

void Register(const char* id, obs_source_type type, obs_source_frame* (*filterVideo)(void*, obs_source_frame*)) {
  obs_source_info info = {};
  info.id = id;
  info.type = type;
  info.output_flags = OBS_SOURCE_ASYNC_VIDEO;
  info.get_name = [](void*) { return ""; };
  info.create = [](obs_data_t*, obs_source_t* source) -> void* { return source; };
  info.destroy = [](void*) {};
  info.filter_video = filterVideo;
  obs_register_source(&info);
}

void KeepLog(int /*level*/, const char* format, va_list arguments, void* /*param*/) {
  char line[1024];
  std::vsnprintf(line, sizeof(line), format, arguments);
  const std::lock_guard lock(mutex);
  if (std::string(line).starts_with("[vidproc]")) logged += line + std::string("\n");
}

void Require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

}  // namespace

Bytes Noise(const Shape& shape, unsigned number) { return BytesOf(*NoisyFrame(shape, number).frame); }

void StartStudio() {
  base_set_log_handler(KeepLog, nullptr);
  display = XOpenDisplay(nullptr);
  Require(display != nullptr, "no display");
  obs_set_nix_platform(OBS_NIX_PLATFORM_X11_EGL);
  obs_set_nix_platform_display(display);
  Require(obs_startup("en-US", nullptr, nullptr), "libobs does not start");
  obs_video_info video = {};
  video.graphics_module = "libobs-opengl";
  video.fps_num = 100;
  video.fps_den = 1;
  video.base_width = video.output_width = 64;
  video.base_height = video.output_height = 64;
  video.output_format = VIDEO_FORMAT_NV12;
  video.gpu_conversion = true;
  video.colorspace = VIDEO_CS_709;
  Require(obs_reset_video(&video) == OBS_VIDEO_SUCCESS, "no video");
  Register("camera", OBS_SOURCE_TYPE_INPUT, nullptr);
  Register("before", OBS_SOURCE_TYPE_FILTER, NoteBefore);
  Register("after", OBS_SOURCE_TYPE_FILTER, NoteAfter);
  obs_module_t* module = nullptr;
  Require(obs_open_module(&module, VIDPROC_OBS_MODULE, nullptr) == MODULE_SUCCESS && obs_init_module(module),
          "the module does not load");
}

long EndStudio() {
  obs_shutdown();
  XCloseDisplay(display);
  return bnum_allocs();
}

void WaitForPictures() {
  const std::uint32_t begin = obs_get_total_frames();
  for (int i = 0; obs_get_total_frames() - begin < 3 && i < 10000; ++i) std::this_thread::sleep_for(1ms);
}

std::string TakeLog() {
  const std::lock_guard lock(mutex);
  return std::exchange(logged, {});
}

Camera::Camera(const std::string& settings)
    : source(obs_source_create("camera", "camera", nullptr, nullptr)),
      before(obs_source_create_private("before", "before", nullptr)),
      after(obs_source_create_private("after", "after", nullptr)) {
  obs_data_t* const data = obs_data_create_from_json(settings.c_str());
  filter = obs_source_create("vidproc", "vidproc", data, nullptr);
  obs_data_release(data);
  for (obs_source_t* const one : {before, filter, after}) obs_source_filter_add(source, one);
  // Every frame is shown when the next picture is made, whatever its time.
  obs_source_set_async_unbuffered(source, true);
  obs_set_output_source(0, source);
}

Camera::~Camera() {
  obs_set_output_source(0, nullptr);
  for (obs_source_t* const one : {before, filter, after}) {
    obs_source_filter_remove(source, one);
    obs_source_release(one);
  }
  obs_source_release(source);
}

void Camera::Set(const std::string& settings) {
  obs_data_t* const data = obs_data_create_from_json(settings.c_str());
  obs_source_update(filter, data);
  obs_data_release(data);
  WaitForPictures();
}

Bytes Camera::Show(const Shape& shape, unsigned number) {
  return ShowAt(10 * kSecond + number * kSecond / 30, shape, number);
}

Bytes Camera::ShowAt(std::uint64_t nanoseconds, const Shape& shape, unsigned number) {
  const NoisyFrame noisy(shape, number);
  noisy.frame->timestamp = nanoseconds;
  std::unique_lock lock(mutex);
  hasArrived = false;
  lock.unlock();
  obs_source_output_video(source, noisy.frame);
  lock.lock();
  Require(arrival.wait_for(lock, 20s, [] { return hasArrived; }), "no frame arrived");
  return arrived;
}

long BlocksOfLastFrame() {
  const std::lock_guard lock(mutex);
  return blocksOfLastFrame;
}

}  // namespace vidproc_obs_tests
