// The library's pre- and post-processor behind one face, and what sets them apart.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vidproc/vidproc.hpp>

namespace vidproc::gstreamer {

/// A stream with its settings. Settings belong to any thread, frames to one at a time.
class Processor {
 public:
  virtual ~Processor() = default;

  /// One of the settings that the library lists for this side.
  virtual std::int32_t Get(const vidproc_option& option) = 0;
  virtual void Set(const vidproc_option& option, std::int32_t value) = 0;
  /// Changes all settings to those of a preset, by its number, and tells the last one so chosen.
  virtual void UsePreset(std::int32_t number) = 0;
  virtual std::int32_t Preset() = 0;

  /// Whether settings have changed since the last call of Configure.
  virtual bool HasNewSettings() const = 0;
  /// Returns why the library refuses the settings, which leaves the former ones in use; empty after success. So do
  /// other functions that return text.
  virtual std::string Configure(const FrameInfo& input, const FrameInfo& output) = 0;
  virtual bool PassesThrough() = 0;
  virtual std::string Process(const Input& input, const Output& output) = 0;
  virtual void Reset() = 0;
  /// Of any thread: the input's noise in luma levels; 0 where it is not measured.
  virtual double Noise() const = 0;
};

/// One side of the encoder.
struct Side {
  const char* element;
  const char* typeName;
  const char* longName;
  const char* description;
  const vidproc_option* (*optionAt)(std::int32_t number);
  const char* (*presetAt)(std::int32_t number);
  std::unique_ptr<Processor> (*makeProcessor)();
  bool measuresNoise;
};

extern const Side kPreSide;
extern const Side kPostSide;

}  // namespace vidproc::gstreamer
