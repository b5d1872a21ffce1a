// The exposure watcher for frames of every format. It looks at the luma of tight UYVY rows; other frames are laid out
// so first, with anything in the place of chroma.
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "api/error_text.h"
#include "api/frame_checks.h"
#include "api/handle.h"
#include "api/option_checks.h"
#include "exposure/auto_exposure.h"
#include "kernels/kernel_table.h"
#include "vidproc/video_processor.h"
#include "vidproc/vidproc.h"

namespace vidproc::api {
namespace {

/// Brightness is a sum over blocks in 16.16 fixed point, which more blocks than these could wrap.
constexpr std::int32_t kMostBlocks = 32896;

struct CleanUp {
  void operator()(void* watcher) const { VidProcAdjustAutoExposureCleanup(&watcher); }
};

struct Watcher {
  ErrorText error;
  vidproc_frame_info input = {};
  std::unique_ptr<void, CleanUp> state;     ///< null until configured
  std::unique_ptr<std::uint8_t[]> staging;  ///< a frame of tight UYVY rows
};

std::size_t StagedRowBytes(const vidproc_frame_info& info) { return 2 * static_cast<std::size_t>(info.width); }

/// `row` is an input row of the plane that holds luma.
void StageRow(const vidproc_frame_info& info, const std::uint8_t* row, std::uint8_t* staged) {
  const std::size_t bytes = StagedRowBytes(info);
  if (info.format == VIDPROC_FORMAT_UYVY) {
    std::memcpy(staged, row, bytes);
  } else if (info.format == VIDPROC_FORMAT_YUYV) {
    std::memcpy(staged + 1, row, bytes - 1);
  } else {
    Kernels().interleaveRow(row, row, staged, static_cast<std::ptrdiff_t>(bytes / 4 * 4));
    staged[bytes - 1] = row[info.width - 1];
  }
}

const std::uint8_t* StagedFrame(Watcher& watcher, const vidproc_input& input) {
  const std::size_t rowBytes = StagedRowBytes(watcher.input);
  if (input.format == VIDPROC_FORMAT_UYVY && input.stride[0] == static_cast<std::ptrdiff_t>(rowBytes)) {
    return input.plane[0];
  }
  for (std::int32_t y = 0; y < watcher.input.height; ++y) {
    StageRow(watcher.input, input.plane[0] + y * input.stride[0],
             watcher.staging.get() + static_cast<std::size_t>(y) * rowBytes);
  }
  return watcher.staging.get();
}

vidproc_status Configure(Watcher& watcher, const vidproc_exposure_options* options) noexcept {
  vidproc_exposure_options known;
  const vidproc_status status = ReadOptions(kExposureOptions, options, &known, watcher.error);
  if (status != VIDPROC_OK) return status;
  const vidproc_frame_info& input = known.input;
  const std::int32_t blocks = (input.width / kExposureBlockSize) * (input.height / kExposureBlockSize);
  if (blocks > kMostBlocks) {
    return watcher.error.Set(VIDPROC_ERROR_UNSUPPORTED,
                             "input.width x input.height is %d blocks of %d x %d, allowed up to %d", blocks,
                             kExposureBlockSize, kExposureBlockSize, kMostBlocks);
  }
  return WithoutExceptions(watcher.error, [&] {
    auto staging = std::make_unique<std::uint8_t[]>(StagedRowBytes(input) * static_cast<std::size_t>(input.height));
    void* state = nullptr;
    VidProcAdjustAutoExposureInit(&state, input.width, input.height, 0);
    if (state == nullptr) throw std::bad_alloc();
    watcher.state.reset(state);
    watcher.staging = std::move(staging);
    watcher.input = input;
    return VIDPROC_OK;
  });
}

vidproc_status Process(Watcher& watcher, const vidproc_input* input, vidproc_exposure_event* event) noexcept {
  ErrorText& error = watcher.error;
  if (watcher.state == nullptr) return RefuseUnconfigured(error);
  if (input == nullptr) return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "input is null, allowed is a frame");
  if (event == nullptr) return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "event is null, allowed is a place for it");
  const vidproc_status status = CheckFrame(ViewOf("input", *input), watcher.input, error);
  if (status != VIDPROC_OK) return status;
  // The frame is only read.
  auto* frame = const_cast<std::uint8_t*>(StagedFrame(watcher, *input));
  const int result = VidProcAdjustAutoExposure(watcher.state.get(), frame);
  *event = result == 1 ? VIDPROC_EXPOSURE_DRIFTED : result == 0 ? VIDPROC_EXPOSURE_SETTLED : VIDPROC_EXPOSURE_NONE;
  return VIDPROC_OK;
}

vidproc_status Reset(Watcher& watcher) noexcept {
  if (watcher.state != nullptr) RestartExposure(*static_cast<AutoExposureState*>(watcher.state.get()));
  return VIDPROC_OK;
}

}  // namespace
}  // namespace vidproc::api

using namespace vidproc::api;

struct vidproc_exposure : Watcher {};

extern "C" {

vidproc_status vidproc_exposure_create(vidproc_exposure** exposure) { return CreateHandle(exposure); }
void vidproc_exposure_destroy(vidproc_exposure* exposure) { delete exposure; }
vidproc_status vidproc_exposure_options_init(vidproc_exposure_options* options, size_t size) {
  return WriteDefaults(kExposureOptions, options, size);
}
vidproc_status vidproc_exposure_configure(vidproc_exposure* exposure, const vidproc_exposure_options* options) {
  return CallHandle(exposure, [&](Watcher& w) { return Configure(w, options); });
}
vidproc_status vidproc_exposure_process(vidproc_exposure* exposure, const vidproc_input* input,
                                        vidproc_exposure_event* event) {
  return CallHandle(exposure, [&](Watcher& w) { return Process(w, input, event); });
}
vidproc_status vidproc_exposure_reset(vidproc_exposure* exposure) { return CallHandle(exposure, Reset); }
const char* vidproc_exposure_last_error(const vidproc_exposure* exposure) {
  return LastError(exposure, "exposure is null");
}

}  // extern "C"
