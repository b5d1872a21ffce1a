// Sequences over the checked interface: handles of every kind, options of any value and size, frames with any stride,
// pointer and byte count that is true, apart, in place and overlapping. A refused call changes nothing and says why.
#include <cstddef>
#include <cstring>
#include <iterator>
#include <memory>

#include "api/presets.h"
#include "checked_frames.h"
#include "targets.h"

namespace fuzzing {
namespace {

constexpr int kMostCalls = 24;

/// Frames of this many pixels are configured, larger ones only where that is refused.
constexpr std::int64_t kMostPixels = 1 << 16;

bool IsLarge(const vidproc_frame_info& info) { return std::int64_t{info.width} * info.height > kMostPixels; }

template <typename Call>
vidproc_status StatusOf(const Call& call) {
  try {
    call();
    return VIDPROC_OK;
  } catch (const vidproc::Error& error) {
    Require(std::strchr(error.what(), ':') != nullptr, "a refusal has its text");
    return error.Status();
  }
}

template <typename Handle, typename Options>
class Stream {
 public:
  Stream(Input& input, Run run) : input(input), run(run) {}

  void Call(Digest& digest) {
    const int call = input.Between(0, 9);
    digest.Add(call < 2    ? Configure()
               : call == 2 ? Reset()
               : call == 8 ? ConfigurePreset()
               : call == 9 ? AskNoise(digest)
                           : Process(digest));
  }

 private:
  vidproc_status Reset() {
    handle.Reset();
    return VIDPROC_OK;
  }

  vidproc_status Configure() {
    auto drawn = DrawOptions<Options>(input);
    const std::size_t size = input.OneIn(8) ? input.Any() % 5000 : sizeof(Options);
    const auto memory = std::make_unique<std::uint32_t[]>(size / 4 + 1);
    auto* const options = reinterpret_cast<Options*>(memory.get());
    const bool isWritten = vidproc::api::WriteDefaults(TableOf<Options>(), options, size) == VIDPROC_OK;
    std::memcpy(&drawn, memory.get(), sizeof(drawn.struct_size));
    std::memcpy(memory.get(), &drawn, std::min(size, sizeof(drawn)));
    while (input.OneIn(4)) memory[input.Byte() % (size / 4 + 1)] = input.Any();
    if constexpr (requires { drawn.dither_seed; }) {
      constexpr std::size_t kSeed = offsetof(Options, dither_seed) / 4;
      const bool isByTheClock = kSeed <= size / 4 && memory[kSeed] == 0xFFFFFFFF;
      if (run == Run::kRepeatable && isByTheClock) memory[kSeed] = 0;
    }
    std::memcpy(&drawn, memory.get(), std::min(size, sizeof(drawn)));
    // struct_size is true, or such that nothing is read.
    if (drawn.struct_size > size || !isWritten) memory[0] = static_cast<std::uint32_t>(input.OneIn(2) ? 5000 : 0);
    bool isLarge = IsLarge(drawn.input);
    if constexpr (requires { drawn.output; }) isLarge = isLarge || IsLarge(drawn.output);
    if (isLarge && vidproc::api::IsValid(drawn.input)) return Reset();
    const vidproc_status status = StatusOf([&] { handle.Configure(*options); });
    if (status == VIDPROC_OK) configured = drawn;
    return status;
  }

  vidproc_status ConfigurePreset() {
    if constexpr (requires(Options o) { o.output; }) {
      const auto presets = kIsPre<Options> ? vidproc::api::kPrePresets : vidproc::api::kPostPresets;
      const char* const name = vidproc::api::PresetName(presets, input.Between(-1, 6));
      Options options;
      const vidproc_status status =
          vidproc::api::WritePreset(TableOf<Options>(), presets, name, &options, sizeof(options));
      Require((status == VIDPROC_OK) == (name != nullptr), "presets have names");
      if (name == nullptr) return Reset();
      const auto drawn = DrawOptions<Options>(input);
      options.input = drawn.input;
      options.output = drawn.output;
      options.dither_seed = 0;
      handle.Configure(options);
      configured = options;
      return VIDPROC_OK;
    } else {
      return Reset();
    }
  }

  vidproc_status AskNoise(Digest& digest) {
    if constexpr (kIsPre<Options>) {
      return StatusOf([&] { digest.Add(handle.Noise()); });
    } else {
      return Reset();
    }
  }

  PlacedFrame DrawFrame(const vidproc_frame_info& configuredInfo) {
    vidproc_frame_info info = configuredInfo;
    if (!vidproc::api::IsValid(info)) info = DrawInfo(input);
    std::ptrdiff_t strides[3] = {};
    DrawStrides(info, input, strides);
    while (input.OneIn(8)) {
      const auto any = static_cast<std::ptrdiff_t>(static_cast<std::int32_t>(input.Any()));
      strides[input.Byte() % 3] = input.OneIn(4) ? any * 0x10001 * 0x7FFF : any;
    }
    PlacedFrame frame(info, strides, input.OneIn(10) ? input.Any() % kMostFrameBytes : kMostFrameBytes);
    frame.Fill(input);
    if (input.OneIn(16)) frame.view.plane[input.Byte() % 3] = nullptr;
    if (input.OneIn(16)) frame.view.width = static_cast<std::int32_t>(input.Any());
    if (input.OneIn(16)) frame.view.format = static_cast<std::int32_t>(input.Any());
    return frame;
  }

  vidproc_status Process(Digest& digest) {
    const PlacedFrame in = DrawFrame(configured.input);
    const vidproc_input source = AsInput(in.view);
    if constexpr (requires { configured.output; }) {
      const PlacedFrame own = DrawFrame(configured.output);
      vidproc_output view = own.view;
      const int placement = input.Between(0, 5);
      if (placement == 0) {
        view = in.view;
        view.format = own.view.format, view.width = own.view.width, view.height = own.view.height;
      } else if (placement == 1) {
        PutInto(in, view);
      }
      const std::uint64_t sourceBefore = in.DigestOfAll(), before = own.DigestOfAll();
      const vidproc_status status = StatusOf([&] { handle.Process(source, view); });
      Require(status == VIDPROC_OK || (in.DigestOfAll() == sourceBefore && own.DigestOfAll() == before),
              "a refused frame is left alone");
      Require(placement < 2 || in.DigestOfAll() == sourceBefore, "an input of its own is only read");
      digest.Add(static_cast<std::int64_t>(placement < 2 ? in.DigestOfAll() : own.DigestOfAll()));
      return status;
    } else {
      return StatusOf([&] { handle.Process(source); });
    }
  }

  /// One plane of the output somewhere in one of the input's.
  void PutInto(const PlacedFrame& in, vidproc_output& view) {
    const std::size_t from = input.Byte() % in.planes.size(), to = input.Byte() % 3;
    const std::size_t count = in.planes[from].Count();
    if (count == 0) return;
    const std::size_t offset = input.Word() % count;
    const vidproc_output& f = in.view;
    const auto low = reinterpret_cast<std::uintptr_t>(f.plane[from]) + offset;
    view.plane[to] = reinterpret_cast<std::uint8_t*>(low);
    view.stride[to] = input.OneIn(2) && f.stride[from] > 0 ? f.stride[from] : std::ptrdiff_t{input.Byte()};
    view.bytes[to] = f.stride[from] > 0 ? count - offset : 0;
  }

  Input& input;
  const Run run;
  Handle handle;
  Options configured = {};
};

}  // namespace

std::uint64_t RunInterface(Input& input, Run run) {
  Digest digest;
  Stream<vidproc::Pre, vidproc_pre_options> pre(input, run);
  Stream<vidproc::Post, vidproc_post_options> post(input, run);
  Stream<vidproc::Exposure, vidproc_exposure_options> exposure(input, run);
  for (int call = 0; call < kMostCalls && !input.IsEmpty(); ++call) {
    const int stream = input.Between(0, 4);
    stream < 2 ? pre.Call(digest) : stream < 4 ? post.Call(digest) : exposure.Call(digest);
  }
  return digest.Value();
}

void FuzzInterface(Input input) { RunInterface(input, Run::kAnything); }

}  // namespace fuzzing
