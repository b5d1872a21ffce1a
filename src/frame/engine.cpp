// What every frame passes on its way to a kernel: checks against the buffers, the job, noise, and the pass-through.
#include "frame/engine.h"

#include <new>

#include "frame/frame_memory.h"
#include "kernels/kernel_table.h"
#include "levels/general_forms.h"

namespace vidproc {
namespace {

ScaleGeometry GeometryOf(const VideoProcessor& p, const ScalerTraits& traits) {
  return {static_cast<std::int32_t>(p.inWidth),
          static_cast<std::int32_t>(p.inHeight),
          static_cast<std::int32_t>(p.outWidth),
          static_cast<std::int32_t>(p.outHeight),
          {p.horizontalUp, p.horizontalDown},
          {p.verticalUp, p.verticalDown},
          traits.horizontalTaps,
          traits.verticalTaps,
          traits.precisionBits,
          GeneralFormsOnly() ? ByteRowShape{} : Kernels().byteRowShape};
}

}  // namespace

/// Frames that outgrow the object's buffers are accepted and never processed: they get no working memory either.
void Engine::PrepareWorkspace(VideoProcessor& p) {
  if (p.workspace == nullptr) p.workspace = new Workspace;
  if (FitsScaler(p, kPlainScaler)) p.workspace->Reserve({p.inWidth, p.inHeight, p.outWidth, p.outHeight});
}

void Engine::ReleaseWorkspace(VideoProcessor& p) noexcept {
  delete p.workspace;
  p.workspace = nullptr;
}

/// Takes memory only where fields written by hand ask for more than set-up has made.
bool Engine::ReserveWorkspace(VideoProcessor& p) {
  try {
    PrepareWorkspace(p);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

std::optional<std::uint64_t> Engine::RoomInWorkingBuffer(const VideoProcessor& p, const void* start) {
  const struct {
    const void* start;
    std::uint64_t bytes;
  } buffers[] = {{p.scratchA, p.scratchBytes},
                 {p.scratchB, p.scratchBytes},
                 {p.previousFrame, p.previousFrameBytes},
                 {p.smoothingBufferLarge, p.smoothingLargeBytes},
                 {p.smoothingBufferSmall, p.smoothingSmallBytes}};
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  for (const auto& buffer : buffers) {
    const auto first = reinterpret_cast<std::uintptr_t>(buffer.start);
    if (first != 0 && address >= first && address - first < buffer.bytes) return buffer.bytes - (address - first);
  }
  return std::nullopt;
}

bool Engine::FramesAreUsable(const VideoProcessor& p) {
  if (p.srcFrame == nullptr || p.dstFrame == nullptr) return false;
  if (p.inWidth < 2 || p.outWidth < 2 || p.inHeight < 1 || p.outHeight < 1) return false;
  if (p.inStride / 2 < p.inWidth || p.outStride / 2 < p.outWidth) return false;
  const auto sourceRoom = RoomInWorkingBuffer(p, p.srcFrame);
  if (sourceRoom && SourceExtent(p) > *sourceRoom) return false;
  const auto destinationRoom = RoomInWorkingBuffer(p, p.dstFrame);
  return !destinationRoom || (p.outStride == 2 * p.outWidth && DestinationExtent(p) <= *destinationRoom);
}

/// By the whole-frame layouts that set-up sizes its buffers for, whatever the strips really need.
bool Engine::FitsScaler(const VideoProcessor& p, const ScalerTraits& traits) {
  if (p.inWidth >= kMaxFrameSide || p.inHeight >= kMaxFrameSide || p.outWidth >= kMaxFrameSide ||
      p.outHeight >= kMaxFrameSide) {
    return false;
  }
  const std::uint64_t inRow = std::uint64_t{2} * p.inWidth;
  const std::uint64_t outRow = std::uint64_t{2} * p.outWidth;
  const std::uint64_t packedOutput = outRow * p.outHeight;
  const std::uint64_t edgeColumns = traits.horizontalTaps > 8 ? 64 : 32;
  const auto fits = [](const void* buffer, std::uint64_t bytes, std::uint64_t need) {
    return buffer != nullptr && need <= bytes;
  };
  if (!fits(p.scratchA, p.scratchBytes, (p.inHeight + std::uint64_t{8}) * inRow) ||
      !fits(p.scratchA, p.scratchBytes, (inRow + edgeColumns) * p.outHeight * 2) ||
      (p.outStride != outRow && !fits(p.scratchA, p.scratchBytes, packedOutput)) ||
      !fits(p.scratchB, p.scratchBytes, 2 * inRow * p.outHeight) || !fits(p.scratchB, p.scratchBytes, packedOutput)) {
    return false;
  }
  if (traits.hasHistory && !fits(p.previousFrame, p.previousFrameBytes, packedOutput)) return false;
  if (!traits.smoothsMotion) return true;
  const std::uint64_t largerHeight = p.inHeight > p.outHeight ? p.inHeight : p.outHeight;
  const std::uint64_t largerRow = inRow > outRow ? inRow : outRow;
  return fits(p.smoothingBufferSmall, p.smoothingSmallBytes, inRow * largerHeight) &&
         fits(p.smoothingBufferLarge, p.smoothingLargeBytes, 2 * largerRow * p.outHeight);
}

bool Engine::MayScale(VideoProcessor& p, const ScalerTraits& traits) {
  const auto half = [](std::uint32_t width) { return std::int64_t{width / 2 + width % 2}; };
  return FramesAreUsable(p) && FitsScaler(p, traits) &&
         RatioReachesNoFurther({p.horizontalUp, p.horizontalDown}, p.outWidth, p.inWidth) &&
         RatioReachesNoFurther({p.horizontalUp, p.horizontalDown}, half(p.outWidth), half(p.inWidth)) &&
         RatioReachesNoFurther({p.verticalUp, p.verticalDown}, p.outHeight, p.inHeight) && ReserveWorkspace(p);
}

NoiseField* Engine::StartFrameNoise(VideoProcessor& p, NoiseRule rule) {
  NoiseField* const field = p.workspace == nullptr ? nullptr : &p.workspace->noise;
  return vidproc::StartFrameNoise(p, rule, field) ? field : nullptr;
}

std::uint8_t* Engine::SparePlace(VideoProcessor& p, const std::uint8_t* written, std::uint64_t bytes) {
  auto* const scratchB = reinterpret_cast<std::uint8_t*>(p.scratchB);
  return Overlap(written, bytes, scratchB, p.scratchBytes) ? reinterpret_cast<std::uint8_t*>(p.scratchA) : scratchB;
}

/// The source as it is, or a packed copy of it where writing the destination would change it.
Engine::Rows Engine::SourceApart(VideoProcessor& p) {
  const std::uint64_t rowBytes = std::uint64_t{2} * p.inWidth;
  if (!Overlap(p.srcFrame, SourceExtent(p), p.dstFrame, DestinationExtent(p)))
    return {p.srcFrame, static_cast<std::ptrdiff_t>(p.inStride)};
  std::uint8_t* const copy = SparePlace(p, p.dstFrame, DestinationExtent(p));
  CopyRows(p.srcFrame, p.inStride, copy, rowBytes, rowBytes, p.inHeight);
  return {copy, static_cast<std::ptrdiff_t>(rowBytes)};
}

/// Scaling kernels read past the end of short rows: those are copied to where they may.
Engine::Rows Engine::WithRoomPastRows(VideoProcessor& p, const Rows& rows) {
  const std::uint64_t rowBytes = std::uint64_t{2} * p.inWidth;
  if (rowBytes >= kMinRowBytes) return rows;
  CopyRows(rows.start, static_cast<std::uint64_t>(rows.stride), p.workspace->narrowRows, kMinRowBytes, rowBytes,
           p.inHeight);
  return {p.workspace->narrowRows, kMinRowBytes};
}

const ScalePlan& Engine::UpdatePlan(VideoProcessor& p, const ScalerTraits& traits) {
  p.workspace->plan.Update(p, GeometryOf(p, traits), p.workspace->planMemory);
  return p.workspace->plan;
}

ScaleJob Engine::MakeScaleJob(VideoProcessor& p, const ScalerTraits& traits) {
  const Workspace& workspace = *p.workspace;
  const ScalePlan& plan = UpdatePlan(p, traits);
  ScaleJob job{};
  job.planes = workspace.planes;
  const Rows source = WithRoomPastRows(p, SourceApart(p));
  job.source = source.start;
  job.sourceStride = source.stride;
  job.inWidth = static_cast<std::int32_t>(p.inWidth);
  job.inHeight = static_cast<std::int32_t>(p.inHeight);
  job.destination = p.dstFrame;
  job.destinationStride = p.outStride;
  job.outWidth = static_cast<std::int32_t>(p.outWidth);
  job.outHeight = static_cast<std::int32_t>(p.outHeight);
  job.rowPositions = plan.rowPositions;
  job.verticalBank = &plan.verticalBank;
  job.horizontalBank = &plan.horizontalBank;
  job.horizontal = &plan.horizontal;
  job.byteRowPlan = plan.byteRowPlan;
  // From shifts of 8 on (adaptive 9, temporal shift 8) large differences regain weight, in 16-bit lanes only.
  const bool blendsInBytes = !traits.hasHistory || (p.temporalShift < 8 && p.temporalStrength < 128);
  job.adaptsInBytes = plan.adaptsInBytes && p.adaptive >= 1 && p.adaptive <= 8 && blendsInBytes;
  // kept: adaptive 0 shifts by 255 or more, which clears the lost weight.
  job.adaptiveShift = p.adaptive == 0 ? 255 : p.adaptive - 1;
  job.temporalStrength = p.temporalStrength;
  job.temporalShift = p.temporalShift;
  job.lumaGain = p.lumaGain[0];
  job.lumaOffset = p.lumaOffset[0];
  job.strip = workspace.strip;
  if (traits.hasHistory) {
    job.history = p.previousFrame;
    job.firstFrame = p.temporalFirstFrame != 0;
  }
  if (traits.smoothsMotion) {
    job.previousVertical = reinterpret_cast<std::int16_t*>(p.smoothingBufferLarge);
  }
  return job;
}

void Engine::PlacePreviousInput(VideoProcessor& p, ScaleJob& job) {
  const std::uint64_t rowBytes = std::uint64_t{2} * p.inWidth;
  job.previousInput = p.smoothingBufferSmall;
  job.previousInputStride = static_cast<std::ptrdiff_t>(rowBytes);
  if (rowBytes >= kMinRowBytes) return;
  CopyRows(p.smoothingBufferSmall, rowBytes, p.workspace->narrowPreviousInput, kMinRowBytes, rowBytes, p.outHeight);
  job.previousInput = p.workspace->narrowPreviousInput;
  job.previousInputStride = kMinRowBytes;
}

void Engine::RunScaler(VideoProcessor& p, const ScalerTraits& traits) {
  if (!MayScale(p, traits)) return;
  if (p.debugPrint != 0) traits.listBanks(p);
  ScaleJob job = MakeScaleJob(p, traits);
  NoiseField* const noise = StartFrameNoise(p, traits.noise);
  // Rows of 64 KB and more take their noise's source from elsewhere in the frame: only whole frames will do.
  const bool wholeFrameNoise = noise != nullptr && noise->pitch > 0xFFFF;
  job.noise = wholeFrameNoise ? nullptr : noise;

  const auto refreshPreviousInput = [&] {
    const std::uint64_t rowBytes = std::uint64_t{2} * p.inWidth;
    CopyRows(job.source, static_cast<std::uint64_t>(job.sourceStride), p.smoothingBufferSmall, rowBytes, rowBytes,
             p.inHeight);
  };
  if (traits.smoothsMotion) {
    if (job.firstFrame) refreshPreviousInput();
    PlacePreviousInput(p, job);
  }
  (Kernels().*traits.kernel)(job);
  if (traits.smoothsMotion) refreshPreviousInput();

  if (wholeFrameNoise) {
    const std::uint64_t rowBytes = std::uint64_t{2} * p.outWidth;
    AddNoiseWhole(*noise, p.dstFrame, rowBytes, p.outStride, rowBytes * p.outHeight);
  }
  if (traits.hasHistory) p.temporalFirstFrame = 0;
  p.workspace->frameProduced = true;
}

/// Equal sizes, no filtering: a usable frame is copied and dithered. kept: the noise counts its rows from the frame's
/// first byte by its own pitch, whatever the destination's stride.
void Engine::PassThrough(VideoProcessor& p) {
  const std::uint64_t rowBytes = std::uint64_t{2} * p.outWidth;
  const bool hasRoomForCopy = p.scratchA != nullptr && p.scratchB != nullptr && rowBytes * p.inHeight <= p.scratchBytes;
  const Rows source = hasRoomForCopy ? SourceApart(p) : Rows{p.srcFrame, static_cast<std::ptrdiff_t>(p.inStride)};
  CopyRows(source.start, static_cast<std::uint64_t>(source.stride), p.dstFrame, p.outStride, rowBytes, p.outHeight);
  if (p.workspace == nullptr && p.ditherTable != nullptr) ReserveWorkspace(p);
  if (NoiseField* const noise = StartFrameNoise(p, NoiseRule::kSizedByOutput)) {
    const std::uint64_t extent = DestinationExtent(p);
    if (noise->pitch > 0xFFFF) {
      AddNoiseWhole(*noise, p.dstFrame, extent, extent, extent);
    } else {
      Kernels().addNoise(*noise, p.dstFrame, 0, extent);
    }
  }
  if (p.workspace != nullptr) p.workspace->frameProduced = true;
}

}  // namespace vidproc
