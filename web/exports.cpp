// What library.js calls. Frames and texts are addresses in the module's memory; frames that go in or out have planes
// one after another without padding, those that go out are I420.
#include <emscripten.h>
#include <vidproc/vidproc.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "scene/scene.h"
#include "scene/sensor.h"

using vidproc::scene::Sensor;

namespace {

struct Destroy {
  void operator()(vidproc_pre* pre) const { vidproc_pre_destroy(pre); }
};

struct Stream {
  std::unique_ptr<vidproc_pre, Destroy> pre;
  vidproc_frame_info input, output;
};

struct PictureConverter {
  Sensor sensor;
  int width, height;
};

std::int32_t& Field(vidproc_pre_options& options, const vidproc_option& setting) {
  return *reinterpret_cast<std::int32_t*>(reinterpret_cast<char*>(&options) + setting.offset);
}

/// @param textOf  an entry's text by its number, empty beyond the last
template <typename TextOf>
std::string List(TextOf textOf) {
  std::string list = textOf(0);
  for (std::int32_t number = 1; !textOf(number).empty(); ++number) list += ',' + textOf(number);
  return '[' + list + ']';
}

/// Our texts hold nothing that JSON would have to escape.
std::string Quoted(const char* text) { return text == nullptr ? "" : '"' + std::string(text) + '"'; }

std::string Choices(const char* const* choices) {
  return choices == nullptr ? "null" : List([choices](std::int32_t number) { return Quoted(choices[number]); });
}

std::string Setting(std::int32_t number) {
  const vidproc_option* option = vidproc_pre_option(number);
  if (option == nullptr) return "";
  return "{\"name\":" + Quoted(option->name) + ",\"text\":" + Quoted(option->text) +
         ",\"choices\":" + Choices(option->choices) + ",\"low\":" + std::to_string(option->low) +
         ",\"high\":" + std::to_string(option->high) + ",\"also\":" + std::to_string(option->also) + '}';
}

std::string Preset(std::int32_t number) {
  const char* name = vidproc_pre_preset(number);
  vidproc_pre_options options;
  if (vidproc_pre_options_preset(&options, sizeof(options), name) != VIDPROC_OK) return "";
  const auto valueOf = [&options](std::int32_t setting) {
    const vidproc_option* option = vidproc_pre_option(setting);
    return option == nullptr ? "" : std::to_string(Field(options, *option));
  };
  return "{\"name\":" + Quoted(name) + ",\"values\":" + List(valueOf) + '}';
}

}  // namespace

extern "C" {

/// The settings and the presets' values of them, in one order, as JSON.
EMSCRIPTEN_KEEPALIVE const char* ListSettings() {
  static const std::string kSettings = "{\"options\":" + List(Setting) + ",\"presets\":" + List(Preset) + '}';
  return kSettings.c_str();
}

/// Null without memory.
EMSCRIPTEN_KEEPALIVE Stream* CreateStream() {
  vidproc_pre* pre = nullptr;
  if (vidproc_pre_create(&pre) != VIDPROC_OK) return nullptr;
  return new Stream{std::unique_ptr<vidproc_pre, Destroy>(pre), {}, {}};
}

/// @param values  of all settings, in the order of ListSettings.
EMSCRIPTEN_KEEPALIVE vidproc_status Configure(Stream* stream, const std::int32_t* values, vidproc_format format,
                                              std::int32_t width, std::int32_t height, std::int32_t outputWidth,
                                              std::int32_t outputHeight) {
  vidproc_pre_options options;
  vidproc_pre_options_init(&options, sizeof(options));
  options.input = {format, width, height, VIDPROC_SITING_LEFT};
  options.output = {VIDPROC_FORMAT_I420, outputWidth, outputHeight, VIDPROC_SITING_LEFT};
  for (std::int32_t number = 0; const vidproc_option* option = vidproc_pre_option(number); ++number) {
    Field(options, *option) = values[number];
  }
  const vidproc_status status = vidproc_pre_configure(stream->pre.get(), &options);
  if (status == VIDPROC_OK) {
    stream->input = options.input;
    stream->output = options.output;
  }
  return status;
}

EMSCRIPTEN_KEEPALIVE std::size_t InputBytes(const Stream* stream) { return vidproc_frame_bytes(&stream->input); }
EMSCRIPTEN_KEEPALIVE std::size_t OutputBytes(const Stream* stream) { return vidproc_frame_bytes(&stream->output); }

EMSCRIPTEN_KEEPALIVE vidproc_status Process(Stream* stream, const std::uint8_t* from, std::uint8_t* to) {
  vidproc_input input;
  vidproc_output output;
  vidproc_status status = vidproc_input_map(&input, &stream->input, from, InputBytes(stream));
  if (status == VIDPROC_OK) status = vidproc_output_map(&output, &stream->output, to, OutputBytes(stream));
  return status == VIDPROC_OK ? vidproc_pre_process(stream->pre.get(), &input, &output) : status;
}

EMSCRIPTEN_KEEPALIVE void Reset(Stream* stream) { vidproc_pre_reset(stream->pre.get()); }

/// In hundredths of a luma level.
EMSCRIPTEN_KEEPALIVE std::int32_t Noise(Stream* stream) {
  std::int32_t noise = 0;
  vidproc_pre_noise(stream->pre.get(), &noise);
  return noise;
}

EMSCRIPTEN_KEEPALIVE const char* LastError(const Stream* stream) { return vidproc_pre_last_error(stream->pre.get()); }

/// Turns pictures of one size into frames.
/// @param noise  0 (none) to 10, as that of the scene
EMSCRIPTEN_KEEPALIVE PictureConverter* CreateConverter(int width, int height, double noise) {
  return new PictureConverter{Sensor(width, height, 1, noise), width, height};
}

EMSCRIPTEN_KEEPALIVE void DestroyConverter(PictureConverter* converter) { delete converter; }

/// @param picture  red, green, blue, alpha a pixel, as a canvas has them
/// @param frame    gets I420
EMSCRIPTEN_KEEPALIVE void ConvertPicture(PictureConverter* converter, int number, std::uint32_t* picture,
                                         std::uint8_t* frame) {
  const int pixels = converter->width * converter->height;
  for (int i = 0; i < pixels; ++i) picture[i] = __builtin_bswap32(picture[i]) >> 8;
  converter->sensor.Capture({reinterpret_cast<const std::uint8_t*>(picture), 4 * converter->width},
                            {0, 0, converter->width, converter->height});
  converter->sensor.ReadOut(number, 1, vidproc::scene::Format::kI420, frame);
}

}  // extern "C"
