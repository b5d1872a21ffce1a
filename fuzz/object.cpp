// Sequences over the exported functions, the members and the public fields of two objects: any order, any value. Left
// out is what belongs to the caller: pointers to frames that are too small, owned buffers, an unknown windowKind, which
// ends the process by design, and what prints.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>

#include "memory.h"
#include "object_fields.h"
#include "targets.h"
#include "vidproc/video_processor.h"

namespace fuzzing {
namespace {

constexpr int kMostCalls = 60;
constexpr std::int64_t kMostBytesOfAllFrames = 1 << 19;

using Kernel = int (VideoProcessor::*)();
constexpr Kernel kKernels[] = {&Object::PreProcExecute,
                               &Object::PreProcExecute_SSE2,
                               &Object::PreProcAdaptiveExecute,
                               &Object::PreProcAdaptiveMotionSmoothingExecute,
                               &Object::PreProcAdaptive16TapTemporalExecute,
                               &Object::PreProcAdaptive16TapExecute,
                               &Object::PreProcTemporalExecute,
                               &Object::PostProcExecute,
                               &Object::PostProcExecute_SSE2,
                               &Object::Deblock8x8};

constexpr std::size_t kPreScalers = 6;  ///< the first of them

/// Whether the last output of an axis lies behind the last sample of the source.
bool Leaves(std::uint32_t in, std::uint32_t out, std::int32_t up, std::int32_t down) {
  return up < 1 || down < 1 || (std::int64_t{out} - 1) * down / up > std::int64_t{in} - 1;
}

/// Whether buffers of these sizes are small, or so large that none are made.
bool IsAffordable(std::uint64_t height, std::uint64_t stride) {
  const std::uint64_t area = (height + 48) * (stride + 96);
  return area <= 1 << 19 || height >= 1u << 31 || stride >= 1u << 31 || area >= std::uint64_t{1} << 33;
}
bool IsAffordable(const VideoProcessor& p) {
  return IsAffordable(std::max(p.inHeight, p.outHeight), std::max(p.inStride, p.outStride));
}

/// The frames of one call, as the object's fields describe them.
class Frames {
 public:
  Frames(const VideoProcessor& p, Input& input, Run run) {
    const std::optional<std::uint64_t> in = Extent(p.inWidth, p.inHeight, p.inStride);
    const std::optional<std::uint64_t> out = Extent(p.outWidth, p.outHeight, p.outStride);
    const int placement = input.Between(0, 7);
    if (!in || !out || placement == 7) return;
    if (placement == 6) {
      Make(0, std::max(*in, *out), input);
      source = destination = blocks[0]->Start();
    } else if (placement == 5) {
      const auto ahead = static_cast<std::uint64_t>(input.Between(0, 400));
      const bool isSourceAhead = input.OneIn(2);
      Make(0, isSourceAhead ? std::max(*in + ahead, *out) : std::max(*in, *out + ahead), input);
      source = blocks[0]->Start() + (isSourceAhead ? ahead : 0);
      destination = blocks[0]->Start() + (isSourceAhead ? 0 : ahead);
    } else {
      Make(0, *in, input);
      Make(1, *out, input);
      source = blocks[0]->Start();
      destination = blocks[1]->Start();
    }
    if (placement == 4 && run == Run::kAnything) (input.OneIn(2) ? source : destination) = WorkingMemory(p, input);
  }

  void AddTo(Digest& digest) const {
    for (const auto& block : blocks) {
      if (block) block->AddTo(digest);
    }
  }

  std::int64_t Count() const {
    std::size_t count = 0;
    for (const auto& block : blocks) count += block ? block->Count() : 0;
    return static_cast<std::int64_t>(count);
  }

  std::uint8_t* source = nullptr;
  std::uint8_t* destination = nullptr;

 private:
  static std::optional<std::uint64_t> Extent(std::uint64_t width, std::uint64_t height, std::uint64_t stride) {
    if (height == 0 || width > kMostFrameBytes || (height - 1) * stride > kMostFrameBytes) return std::nullopt;
    return ExtentOf(2 * width, height, stride);
  }
  void Make(int index, std::uint64_t count, Input& input) {
    blocks[index].emplace(static_cast<std::size_t>(count));
    blocks[index]->Fill(input);
  }
  /// Of the buffers that live as long as the object: a call may release those of motion smoothing.
  static std::uint8_t* WorkingMemory(const VideoProcessor& p, Input& input) {
    std::uint8_t* const buffers[] = {reinterpret_cast<std::uint8_t*>(p.scratchA),
                                     reinterpret_cast<std::uint8_t*>(p.scratchB), p.previousFrame};
    std::uint8_t* const buffer = input.Pick(buffers);
    return buffer == nullptr ? nullptr : buffer + input.Between(0, 300);
  }

  std::optional<Block> blocks[2];
};

class Objects {
 public:
  Objects(Input& input, Run run) : input(input), run(run) {}
  ~Objects() {
    for (void*& handle : handles) CleanUp(handle);
  }
  Objects(const Objects&) = delete;
  Objects& operator=(const Objects&) = delete;

  std::uint64_t Run() {
    for (int call = 0; call < kMostCalls && !input.IsEmpty() && bytesLeft > 0; ++call) {
      void*& handle = handles[input.Between(0, 1)];
      try {
        Call(handle, input.Between(0, 15));
      } catch (const std::bad_alloc&) {
        digest.Add(-1);
      }
    }
    return digest.Value();
  }

 private:
  void Call(void*& handle, int call) {
    auto* const processor = static_cast<VideoProcessor*>(handle);
    if (processor == nullptr || call < 2) return SetUp(handle);
    VideoProcessor& p = *processor;
    if (run == fuzzing::Run::kRepeatable && p.ditherSeed == -1) p.ditherSeed = 5;
    if (call < 5) return kWriteField[input.Byte() % std::size(kWriteField)](p, input);
    if (call == 5) return CallSetting(p);
    if (call == 6) return CallDesign(p);
    if (call == 7) return AddNoise(p);
    if (call == 8) return CleanUp(handle);
    if (call == 9) return ProcessPlanes(p);
    if (IsAffordable(p)) ProcessFrame(p, call);
  }

  std::uint32_t DrawSide(int most) {
    return input.OneIn(12) ? input.Any() : static_cast<std::uint32_t>(input.Between(1, most));
  }

  void SetUp(void*& handle) {
    const int use = input.Between(0, 2);
    const std::uint32_t inWidth = DrawSide(90), inHeight = DrawSide(40);
    const bool keepsSize = input.OneIn(3);
    const std::uint32_t outWidth = keepsSize ? inWidth : DrawSide(90), outHeight = keepsSize ? inHeight : DrawSide(40);
    const std::uint32_t inStride = input.OneIn(3) ? DrawSide(250) : 2 * inWidth;
    const std::uint32_t outStride = input.OneIn(3) ? DrawSide(250) : 2 * outWidth;
    if (!IsAffordable(std::max(inHeight, outHeight),
                      use == 2 ? std::uint64_t{2} * std::max(inWidth, outWidth) : std::max(inStride, outStride))) {
      return;
    }
    if (use == 2) {
      digest.Add(VidProc420InterleavedInit(&handle, inWidth, inHeight, outWidth, outHeight));
      return;
    }
    const std::uint32_t strength = input.OneIn(3) ? input.Any() : 0, dither = input.Any();
    const std::uint32_t softening = input.OneIn(3) ? input.Any() : 10u * (input.Byte() % 2);
    digest.Add((use == 0 ? PreProcInit : PostProcInit)(&handle, inWidth, inHeight, inStride, outWidth, outHeight,
                                                       outStride, strength, dither, softening));
  }

  void CleanUp(void*& handle) {
    // The dither table outlives its object by design.
    if (handle != nullptr) std::free(static_cast<VideoProcessor*>(handle)->ditherTable);
    constexpr void (*kCleanUps[])(void**) = {PreProcCleanup, PostProcCleanup, VidProc420InterleavedCleanup};
    input.Pick(kCleanUps)(&handle);
  }

  void ProcessFrame(VideoProcessor& p, int call) {
    Frames frames(p, input, run);
    const auto byte = [this] { return input.Byte(); };
    const auto gain = static_cast<short>(input.Byte() - 100);
    if (call == 10 || call == 11) {
      const std::uint8_t adaptive = byte(), taps = input.OneIn(3), smoothing = input.OneIn(3), strength = byte();
      PreProcExecute(&p, frames.source, frames.destination, adaptive, taps, smoothing, strength, byte() % 10, gain,
                     gain);
    } else if (call == 12) {
      PostProcExecute(&p, frames.source, frames.destination, byte(), gain, gain);
    } else {
      p.srcFrame = frames.source;
      p.dstFrame = frames.destination;
      if (call == 13) {
        char name[] = "name";
        if (input.OneIn(2)) {
          digest.Add(p.Go(name, nullptr));
        } else {
          const std::uint8_t flag[] = {byte(), byte(), byte(), byte(), byte()};
          digest.Add(p.Go(nullptr, name, flag[0], flag[1], flag[2], flag[3], flag[4]));
        }
      } else if (call == 14) {
        digest.Add(p.Go(input.Byte() % 2));
      } else {
        RunKernel(p, input.Byte() % std::size(kKernels), frames);
      }
    }
    p.srcFrame = p.dstFrame = nullptr;
    digest.Add(p.ditherLevel);
    frames.AddTo(digest);
    bytesLeft -= frames.Count() + 1024;
  }

  void RunKernel(VideoProcessor& p, std::size_t kernel, const Frames& frames) {
    const bool mayNotRun = kernel < kPreScalers && (Leaves(p.inWidth, p.outWidth, p.horizontalUp, p.horizontalDown) ||
                                                    Leaves(p.inHeight, p.outHeight, p.verticalUp, p.verticalDown));
    Digest before, after;
    if (mayNotRun) frames.AddTo(before);
    digest.Add((p.*kKernels[kernel])());
    if (mayNotRun) frames.AddTo(after);
    Require(before.Value() == after.Value(), "ratios that leave the frame are refused");
  }

  /// A plane of the given rows, null where it would be too large.
  std::optional<Block> DrawPlane(std::uint64_t width, std::uint64_t rows, std::uint64_t stride) {
    if (rows == 0 || width > kMostFrameBytes || (rows - 1) * stride > kMostFrameBytes) return std::nullopt;
    std::optional<Block> plane(std::in_place, static_cast<std::size_t>(ExtentOf(width, rows, stride)));
    plane->Fill(input);
    return plane;
  }

  void ProcessPlanes(VideoProcessor& p) {
    struct Planes {
      std::uint32_t width, height, lumaStride, chromaStride;
      std::optional<Block> luma, chroma;
    } frames[2];
    for (Planes& f : frames) {
      const bool isSource = &f == frames;
      f.width = input.OneIn(12) ? input.Any() : isSource ? p.inWidth : p.outWidth;
      f.height = input.OneIn(12) ? input.Any() : isSource ? p.inHeight : p.outHeight;
      f.lumaStride = input.OneIn(12) ? input.Any() : f.width + input.Byte() % 4;
      f.chromaStride = input.OneIn(12) ? input.Any() : f.width + input.Byte() % 4;
      f.luma = DrawPlane(f.width, f.height, f.lumaStride);
      // An odd width's last Cr is written where the stride has room for it.
      const bool hasRoom = !isSource && f.width % 2 != 0 && f.chromaStride > f.width;
      f.chroma = DrawPlane(f.width + hasRoom, (std::uint64_t{f.height} + 1) / 2, f.chromaStride);
    }
    const auto start = [](std::optional<Block>& plane) { return plane ? plane->Start() : nullptr; };
    Planes &in = frames[0], &out = frames[1];
    VidProc420InterleavedExecute(&p, start(in.luma), start(in.chroma), start(out.luma), start(out.chroma), in.width,
                                 in.height, in.lumaStride, in.chromaStride, out.width, out.height, out.lumaStride,
                                 out.chromaStride, 64, 0);
    p.srcFrame = p.dstFrame = nullptr;
    for (const auto* plane : {&out.luma, &out.chroma}) {
      if (*plane) (*plane)->AddTo(digest);
    }
    bytesLeft -= 2048;
  }

  void CallSetting(VideoProcessor& p) {
    const auto any = [this] { return input.Any(); };
    const auto byte = [this] { return input.Byte(); };
    switch (input.Between(0, 6)) {
      case 0:
        if (IsAffordable(p)) p.SetUseSpatialMotionSmoothing(byte());
        break;
      case 1: {
        const auto gain = static_cast<short>(any()), offset = static_cast<short>(any());
        p.InitLuminanceShiftTables(gain, offset);
        break;
      }
      case 2:
        p.InitDeblocker(byte());
        break;
      case 3: {
        const std::uint8_t strength = byte(), shift = byte();
        p.SetTemporalFilter(strength, shift);
        break;
      }
      case 4: {
        const std::uint32_t u[] = {any(), any(), any(), any(), any(), any(), any(), any()};
        digest.Add(p.NeedsInit(u[0], u[1], u[2], u[3], u[4], u[5], u[6], u[7]));
        break;
      }
      case 5:
        p.SetTaps(byte());
        break;
      default:
        p.PostProcDitherNoiseLUTCreation(&p.ditherTable);
        break;
    }
  }

  void CallDesign(VideoProcessor& p) {
    const auto taps = static_cast<int>(input.OneIn(3) ? input.Any() : 4u * (1 + input.Byte() % 4));
    const auto bits = input.OneIn(3) ? input.Any() : 7;
    int up = 0, down = 0;
    switch (input.Between(0, 3)) {
      case 0: {
        const auto bank = std::make_unique<short[][16]>(16);
        p.GetFilter(0, 0, bank.get(), taps, static_cast<int>(bits), 0);
        digest.Add(reinterpret_cast<const std::uint8_t*>(bank.get()), sizeof(short[16][16]));
        break;
      }
      case 1: {
        const auto bank = std::make_unique<short[][8]>(16);
        p.GetFilterDeblock(bank.get(), taps, static_cast<int>(bits), 0);
        digest.Add(reinterpret_cast<const std::uint8_t*>(bank.get()), sizeof(short[16][8]));
        break;
      }
      case 2: {
        const auto in = static_cast<int>(input.Any()), out = static_cast<int>(input.Any());
        p.FindUpAndDown(in, out, &up, &down);
        digest.Add(up);
        digest.Add(down);
        break;
      }
      default: {
        if (!IsAffordable(p)) break;
        const auto type = static_cast<EnhanceFilterTypes>(input.OneIn(4) ? input.Any() : input.Byte() % 3u);
        const std::uint32_t strength = input.Any();
        p.SetEnhanceFilter(type, strength, bits, static_cast<short>(input.Any()), 0);
        break;
      }
    }
  }

  void AddNoise(VideoProcessor& p) {
    const auto width = static_cast<std::uint16_t>(DrawSide(100)), height = static_cast<std::uint16_t>(DrawSide(40));
    const std::uint32_t roundedRow = 2 * ((width + 15u) / 16 * 16), pitch = input.OneIn(4) ? input.Any() : roundedRow;
    const std::uint64_t extent = ExtentOf(roundedRow, std::max<std::uint64_t>(height, 1), pitch);
    if (extent > kMostFrameBytes || std::uint64_t{roundedRow} * height > kMostFrameBytes) return;
    bytesLeft -= static_cast<std::int64_t>(extent);
    Block source(static_cast<std::size_t>(extent)), destination(static_cast<std::size_t>(extent));
    source.Fill(input);
    const std::uint32_t seed = input.Byte();
    std::uint8_t* const result = input.OneIn(4) ? source.Start() : destination.Start();
    const auto level = static_cast<std::uint8_t>(1 + input.Byte() % 12);
    digest.Add(
        p.PostProcDitherNoiseUpon2VUY(source.Start(), result, pitch, width, height, seed, 0, level, p.ditherTable));
    source.AddTo(digest);
    destination.AddTo(digest);
  }

  Input& input;
  const fuzzing::Run run;
  Digest digest;
  std::int64_t bytesLeft = kMostBytesOfAllFrames;
  void* handles[2] = {};
};

}  // namespace

std::uint64_t RunObjects(Input& input, Run run) { return Objects(input, run).Run(); }

void FuzzObject(Input input) { RunObjects(input, Run::kAnything); }

}  // namespace fuzzing
