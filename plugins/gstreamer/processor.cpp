#include "processor.h"

#include <cstring>

namespace vidproc::gstreamer {
namespace {

template <typename Call>
std::string RefusalOf(const Call& call) {
  try {
    call();
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

/// Stream is Pre or Post, Options what configures it.
template <typename Stream, typename Options>
class SideProcessor final : public Processor {
 public:
  explicit SideProcessor(const Side& side) : side(side), options(side.presetAt(0)) {}

  std::int32_t Get(const vidproc_option& option) override {
    const std::lock_guard lock(mutex);
    std::int32_t value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(&options) + option.offset, sizeof(value));
    return value;
  }

  void Set(const vidproc_option& option, std::int32_t value) override {
    const std::lock_guard lock(mutex);
    std::memcpy(reinterpret_cast<char*>(&options) + option.offset, &value, sizeof(value));
    hasNewSettings = true;
  }

  void UsePreset(std::int32_t number) override {
    const std::lock_guard lock(mutex);
    options = Options(side.presetAt(number));
    preset = number;
    hasNewSettings = true;
  }

  std::int32_t Preset() override {
    const std::lock_guard lock(mutex);
    return preset;
  }

  bool HasNewSettings() const override { return hasNewSettings; }

  std::string Configure(const FrameInfo& input, const FrameInfo& output) override {
    return RefusalOf([&] {
      Options settings = TakeSettings();
      settings.input = input;
      settings.output = output;
      stream.Configure(settings);
    });
  }

  bool PassesThrough() override { return stream.PassesThrough(); }

  std::string Process(const Input& input, const Output& output) override {
    return RefusalOf([&] {
      stream.Process(input, output);
      if constexpr (requires { stream.Noise(); }) noise = stream.Noise();
    });
  }

  void Reset() override { stream.Reset(); }

  double Noise() const override { return noise / 100.0; }

 private:
  Options TakeSettings() {
    const std::lock_guard lock(mutex);
    hasNewSettings = false;
    return options;
  }

  const Side& side;
  std::mutex mutex;  ///< of options and preset
  Options options;
  std::int32_t preset = 0;
  std::atomic<bool> hasNewSettings = false;
  std::atomic<std::int32_t> noise = 0;
  Stream stream;
};

}  // namespace

const Side kPreSide = {
    "vidprocpre",
    "VidprocPre",
    "Pre-processor of camera frames",
    "Removes noise, scales, sharpens, shifts luma and converts before an encoder",
    vidproc_pre_option,
    vidproc_pre_preset,
    []() -> std::unique_ptr<Processor> { return std::make_unique<SideProcessor<Pre, PreOptions>>(kPreSide); },
    true};

const Side kPostSide = {
    "vidprocpost",
    "VidprocPost",
    "Post-processor of decoded frames",
    "Deblocks, scales, sharpens, shifts luma, dithers and converts after a decoder",
    vidproc_post_option,
    vidproc_post_preset,
    []() -> std::unique_ptr<Processor> { return std::make_unique<SideProcessor<Post, PostOptions>>(kPostSide); },
    false};

}  // namespace vidproc::gstreamer
