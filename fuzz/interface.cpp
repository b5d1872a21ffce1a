// Sequences over the checked interface: handles of every kind, options of any value and size, frames with any stride,
// pointer and byte count that is true, apart, in place and overlapping. A refused call changes nothing and says why.
#include <cstring>
#include <iterator>
#include <memory>

#include "checked_frames.h"
#include "targets.h"

namespace fuzzing {
namespace {

constexpr int kMostCalls = 24;

template <typename HandleType, typename OptionsType>
struct Functions {
  using Handle = HandleType;
  using Options = OptionsType;
  vidproc_status (*create)(Handle**);
  void (*destroy)(Handle*);
  vidproc_status (*init)(Options*, std::size_t);
  vidproc_status (*configure)(Handle*, const Options*);
  vidproc_status (*process)(Handle*, const vidproc_input*, const vidproc_output*);
  vidproc_status (*reset)(Handle*);
  const char* (*lastError)(const Handle*);
  const char* (*presetName)(std::int32_t) = nullptr;
  vidproc_status (*writePreset)(Options*, std::size_t, const char*) = nullptr;
};

constexpr Functions<vidproc_pre, vidproc_pre_options> kPre = {
    vidproc_pre_create,     vidproc_pre_destroy, vidproc_pre_options_init,
    vidproc_pre_configure,  vidproc_pre_process, vidproc_pre_reset,
    vidproc_pre_last_error, vidproc_pre_preset,  vidproc_pre_options_preset};
constexpr Functions<vidproc_post, vidproc_post_options> kPost = {
    vidproc_post_create,     vidproc_post_destroy, vidproc_post_options_init,
    vidproc_post_configure,  vidproc_post_process, vidproc_post_reset,
    vidproc_post_last_error, vidproc_post_preset,  vidproc_post_options_preset};
constexpr Functions<vidproc_exposure, vidproc_exposure_options> kExposure = {
    vidproc_exposure_create,
    vidproc_exposure_destroy,
    vidproc_exposure_options_init,
    vidproc_exposure_configure,
    [](vidproc_exposure* exposure, const vidproc_input* input, const vidproc_output*) {
      vidproc_exposure_event event = VIDPROC_EXPOSURE_NONE;
      return vidproc_exposure_process(exposure, input, &event);
    },
    vidproc_exposure_reset,
    vidproc_exposure_last_error};

/// Frames of this many pixels are configured, larger ones only where that is refused.
constexpr std::int64_t kMostPixels = 1 << 16;

bool IsLarge(const vidproc_frame_info& info) { return std::int64_t{info.width} * info.height > kMostPixels; }

template <typename Calls>
class Stream {
 public:
  Stream(const Calls& calls, Input& input) : calls(calls), input(input) {
    Require(calls.create(&handle) == VIDPROC_OK, "a handle is made");
  }
  ~Stream() { calls.destroy(handle); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  void Call(Digest& digest) {
    const int call = input.Between(0, 9);
    const vidproc_status status = call < 2    ? Configure()
                                  : call == 2 ? calls.reset(handle)
                                  : call == 8 ? ConfigurePreset()
                                  : call == 9 ? AskNoise(digest)
                                              : Process(digest);
    Require((status == VIDPROC_OK) == (*calls.lastError(handle) == '\0'), "a refusal has its text");
    digest.Add(status);
  }

 private:
  using Options = typename Calls::Options;

  vidproc_status Configure() {
    auto drawn = DrawOptions<Options>(input);
    const std::size_t size = input.OneIn(8) ? input.Any() % 5000 : sizeof(Options);
    const auto memory = std::make_unique<std::uint32_t[]>(size / 4 + 1);
    auto* const options = reinterpret_cast<Options*>(memory.get());
    const bool isKnown = calls.init(options, size) == VIDPROC_OK;
    std::memcpy(&drawn, memory.get(), sizeof(drawn.struct_size));
    std::memcpy(memory.get(), &drawn, std::min(size, sizeof(drawn)));
    while (input.OneIn(4)) memory[input.Byte() % (size / 4 + 1)] = input.Any();
    std::memcpy(&drawn, memory.get(), std::min(size, sizeof(drawn)));
    // struct_size is true, or such that nothing is read.
    if (drawn.struct_size > size || !isKnown) memory[0] = static_cast<std::uint32_t>(input.OneIn(2) ? 5000 : 0);
    bool isLarge = IsLarge(drawn.input);
    if constexpr (requires { drawn.output; }) isLarge = isLarge || IsLarge(drawn.output);
    if (isLarge && vidproc::api::IsValid(drawn.input)) return calls.reset(handle);
    const vidproc_status status = calls.configure(handle, options);
    if (status == VIDPROC_OK) configured = drawn;
    return status;
  }

  vidproc_status ConfigurePreset() {
    if (calls.writePreset == nullptr) return calls.reset(handle);
    const std::size_t size = input.OneIn(4) ? input.Any() % 5000 : sizeof(Options);
    const auto memory = std::make_unique<std::uint32_t[]>(size / 4 + 1);
    auto* const options = reinterpret_cast<Options*>(memory.get());
    const bool isWritten = calls.writePreset(options, size, calls.presetName(input.Between(-1, 6))) == VIDPROC_OK;
    if (!isWritten || size < sizeof(Options)) return calls.reset(handle);
    const auto drawn = DrawOptions<Options>(input);
    options->input = drawn.input;
    if constexpr (requires { drawn.output; }) {
      options->output = drawn.output;
      options->dither_seed = 0;
    }
    const vidproc_status status = calls.configure(handle, options);
    Require(status == VIDPROC_OK, "a preset is taken");
    configured = *options;
    return status;
  }

  vidproc_status AskNoise(Digest& digest) {
    if constexpr (kIsPre<Options>) {
      std::int32_t noise = 0;
      const vidproc_status status = vidproc_pre_noise(handle, input.OneIn(8) ? nullptr : &noise);
      digest.Add(noise);
      return status;
    } else {
      return calls.reset(handle);
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
        const vidproc_output& f = in.view;
        view = {own.view.format,
                own.view.width,
                own.view.height,
                {f.plane[0], f.plane[1], f.plane[2]},
                {f.stride[0], f.stride[1], f.stride[2]},
                {f.bytes[0], f.bytes[1], f.bytes[2]}};
      } else if (placement == 1) {
        PutInto(in, view);
      }
      const std::uint64_t sourceBefore = in.DigestOfAll(), before = own.DigestOfAll();
      const vidproc_status status = calls.process(handle, &source, &view);
      Require(status == VIDPROC_OK || (in.DigestOfAll() == sourceBefore && own.DigestOfAll() == before),
              "a refused frame is left alone");
      Require(placement < 2 || in.DigestOfAll() == sourceBefore, "an input of its own is only read");
      digest.Add(static_cast<std::int64_t>(placement < 2 ? in.DigestOfAll() : own.DigestOfAll()));
      return status;
    } else {
      return calls.process(handle, &source, nullptr);
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

  const Calls& calls;
  Input& input;
  typename Calls::Handle* handle = nullptr;
  Options configured = {};
};

}  // namespace

std::uint64_t RunInterface(Input& input, Run) {
  Digest digest;
  Stream pre(kPre, input);
  Stream post(kPost, input);
  Stream exposure(kExposure, input);
  for (int call = 0; call < kMostCalls && !input.IsEmpty(); ++call) {
    const int stream = input.Between(0, 4);
    stream < 2 ? pre.Call(digest) : stream < 4 ? post.Call(digest) : exposure.Call(digest);
  }
  return digest.Value();
}

void FuzzInterface(Input input) { RunInterface(input, Run::kAnything); }

}  // namespace fuzzing
