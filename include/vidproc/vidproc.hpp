// vidproc.h for C++14 and later: handles that clean up after themselves, frames over one buffer, exceptions. Header
// only. Formats, options and everything else are those of vidproc.h and documented there.
#ifndef VIDPROC_VIDPROC_HPP
#define VIDPROC_VIDPROC_HPP

#include <vidproc/vidproc.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#if __cplusplus >= 202002L
#include <span>
#endif

namespace vidproc {

/// A call was refused. what() is the status in words and, where a handle knows more, which field is wrong and what is
/// allowed: "invalid argument: output.width is 1, allowed 2 to 16384".
class Error : public std::runtime_error {
 public:
  /// @param detail  text of the handle, empty where there is none
  Error(vidproc_status refusal, const std::string& detail)
      : std::runtime_error(vidproc_status_text(refusal) + (detail.empty() ? "" : ": " + detail)), status(refusal) {}

  /// VIDPROC_ERROR_*.
  vidproc_status Status() const noexcept { return status; }

 private:
  vidproc_status status;
};

#if __cplusplus >= 202002L
/// Borrowed bytes.
using ByteSpan = std::span<std::uint8_t>;
using ConstByteSpan = std::span<const std::uint8_t>;
#else
/// Borrowed bytes, of a pointer and a size or of a container that has them.
template <typename Byte>
class BasicByteSpan {
 public:
  BasicByteSpan(Byte* start, std::size_t count) : bytes(start), length(count) {}
  template <typename Container, typename = decltype(std::declval<Container&>().data())>
  BasicByteSpan(Container& container) : bytes(container.data()), length(container.size()) {}
  Byte* data() const { return bytes; }
  std::size_t size() const { return length; }

 private:
  Byte* bytes;
  std::size_t length;
};
using ByteSpan = BasicByteSpan<std::uint8_t>;
using ConstByteSpan = BasicByteSpan<const std::uint8_t>;
#endif

/// Structs of vidproc.h.
using FrameInfo = vidproc_frame_info;
using Input = vidproc_input;
using Output = vidproc_output;

namespace detail {

/// Throws Error for any status but VIDPROC_OK.
inline void Require(vidproc_status status, const std::string& text) {
  if (status != VIDPROC_OK) throw Error(status, text);
}

/// The same for a preset that is asked for by its name.
inline void RequirePreset(vidproc_status status, const char* name) {
  Require(status, std::string("there is no preset ") + (name == nullptr ? "of no name" : name));
}

}  // namespace detail

/// Options with their defaults; formats and sizes must be set.
struct PreOptions : vidproc_pre_options {
  PreOptions() : vidproc_pre_options() { vidproc_pre_options_init(this, sizeof(vidproc_pre_options)); }
  /// Of a preset; throws Error for an unknown one.
  explicit PreOptions(const char* preset) : vidproc_pre_options() {
    detail::RequirePreset(vidproc_pre_options_preset(this, sizeof(vidproc_pre_options), preset), preset);
  }
};
/// As PreOptions.
struct PostOptions : vidproc_post_options {
  PostOptions() : vidproc_post_options() { vidproc_post_options_init(this, sizeof(vidproc_post_options)); }
  /// Of a preset; throws Error for an unknown one.
  explicit PostOptions(const char* preset) : vidproc_post_options() {
    detail::RequirePreset(vidproc_post_options_preset(this, sizeof(vidproc_post_options), preset), preset);
  }
};
/// Options with their defaults, of which there are none: format and size must be set.
struct ExposureOptions : vidproc_exposure_options {
  ExposureOptions() : vidproc_exposure_options() {
    vidproc_exposure_options_init(this, sizeof(vidproc_exposure_options));
  }
};

namespace detail {

/// Throws Error for any status but VIDPROC_OK, of a block of `bytes` bytes that is to hold a frame.
inline void RequireBlock(vidproc_status status, std::size_t bytes, const FrameInfo& info) {
  if (status == VIDPROC_OK) return;
  const std::size_t needed = vidproc_frame_bytes(&info);
  Require(status, needed == 0 ? "info has a format or size that is not allowed"
                              : "memory is " + std::to_string(bytes) + " bytes, allowed " + std::to_string(needed) +
                                    " or more, not null");
}

struct PreFunctions {
  using Handle = vidproc_pre;
  using Options = vidproc_pre_options;
  static vidproc_status Create(Handle** handle) { return vidproc_pre_create(handle); }
  static void Destroy(Handle* handle) { vidproc_pre_destroy(handle); }
  static vidproc_status Configure(Handle* handle, const Options& options) {
    return vidproc_pre_configure(handle, &options);
  }
  static vidproc_status Reset(Handle* handle) { return vidproc_pre_reset(handle); }
  static const char* LastError(const Handle* handle) { return vidproc_pre_last_error(handle); }
};

struct PostFunctions {
  using Handle = vidproc_post;
  using Options = vidproc_post_options;
  static vidproc_status Create(Handle** handle) { return vidproc_post_create(handle); }
  static void Destroy(Handle* handle) { vidproc_post_destroy(handle); }
  static vidproc_status Configure(Handle* handle, const Options& options) {
    return vidproc_post_configure(handle, &options);
  }
  static vidproc_status Reset(Handle* handle) { return vidproc_post_reset(handle); }
  static const char* LastError(const Handle* handle) { return vidproc_post_last_error(handle); }
};

struct ExposureFunctions {
  using Handle = vidproc_exposure;
  using Options = vidproc_exposure_options;
  static vidproc_status Create(Handle** handle) { return vidproc_exposure_create(handle); }
  static void Destroy(Handle* handle) { vidproc_exposure_destroy(handle); }
  static vidproc_status Configure(Handle* handle, const Options& options) {
    return vidproc_exposure_configure(handle, &options);
  }
  static vidproc_status Reset(Handle* handle) { return vidproc_exposure_reset(handle); }
  static const char* LastError(const Handle* handle) { return vidproc_exposure_last_error(handle); }
};

/// Owns one handle. Every call throws Error where the function of vidproc.h refuses; what holds after a refusal there
/// holds here. A moved-from owner can only be assigned to or destroyed.
template <typename Functions>
class Owner {
 public:
  /// Not configured.
  Owner() { Require(Functions::Create(&handle), ""); }
  /// Configured.
  explicit Owner(const typename Functions::Options& options) : Owner() { Configure(options); }
  ~Owner() { Functions::Destroy(handle); }
  /// Takes the other's handle.
  Owner(Owner&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
  /// Exchanges the handles.
  Owner& operator=(Owner&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
  }

  /// As vidproc_pre_configure and its like.
  void Configure(const typename Functions::Options& options) { Check(Functions::Configure(handle, options)); }
  /// As vidproc_pre_reset and its like.
  void Reset() { Check(Functions::Reset(handle)); }

  /// The handle, for functions of vidproc.h; stays owned.
  typename Functions::Handle* Get() const noexcept { return handle; }

 protected:
  /// Throws Error, with the handle's text, for any status but VIDPROC_OK.
  void Check(vidproc_status status) const { Require(status, Functions::LastError(handle)); }

 private:
  typename Functions::Handle* handle = nullptr;
};

}  // namespace detail

/// Pre-processor of one stream.
class Pre : public detail::Owner<detail::PreFunctions> {
 public:
  using Owner::Owner;
  /// As vidproc_pre_process.
  void Process(const Input& input, const Output& output) { Check(vidproc_pre_process(Get(), &input, &output)); }
  /// Whether every frame comes out as it went in, see vidproc_pre_passes_through.
  bool PassesThrough() {
    std::int32_t passes = 0;
    Check(vidproc_pre_passes_through(Get(), &passes));
    return passes != 0;
  }
  /// The input's noise in hundredths of a luma level, see vidproc_pre_noise.
  std::int32_t Noise() {
    std::int32_t noise = 0;
    Check(vidproc_pre_noise(Get(), &noise));
    return noise;
  }
};

/// Post-processor of one stream.
class Post : public detail::Owner<detail::PostFunctions> {
 public:
  using Owner::Owner;
  /// As vidproc_post_process.
  void Process(const Input& input, const Output& output) { Check(vidproc_post_process(Get(), &input, &output)); }
  /// Whether every frame comes out as it went in, see vidproc_post_passes_through.
  bool PassesThrough() {
    std::int32_t passes = 0;
    Check(vidproc_post_passes_through(Get(), &passes));
    return passes != 0;
  }
};

/// Exposure watcher of one camera.
class Exposure : public detail::Owner<detail::ExposureFunctions> {
 public:
  using Owner::Owner;
  /// @return VIDPROC_EXPOSURE_*
  vidproc_exposure_event Process(const Input& input) {
    vidproc_exposure_event event = VIDPROC_EXPOSURE_NONE;
    Check(vidproc_exposure_process(Get(), &input, &event));
    return event;
  }
};

/// As vidproc_frame_bytes, but throws Error for an info that is not valid.
inline std::size_t FrameBytes(const FrameInfo& info) {
  const std::size_t bytes = vidproc_frame_bytes(&info);
  if (bytes == 0) detail::Require(VIDPROC_ERROR_INVALID_ARGUMENT, "info has a format or size that is not allowed");
  return bytes;
}

/// A frame in one block of memory, its planes one after another; the block must outlive its use. Throws Error.
inline Input InputOver(const FrameInfo& info, ConstByteSpan memory) {
  Input frame = {};
  detail::RequireBlock(vidproc_input_map(&frame, &info, memory.data(), memory.size()), memory.size(), info);
  return frame;
}
/// The same, to be written.
inline Output OutputOver(const FrameInfo& info, ByteSpan memory) {
  Output frame = {};
  detail::RequireBlock(vidproc_output_map(&frame, &info, memory.data(), memory.size()), memory.size(), info);
  return frame;
}

}  // namespace vidproc

#endif  // VIDPROC_VIDPROC_HPP
