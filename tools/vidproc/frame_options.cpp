// Options of what is done to frames; see option_groups.h.
#include <cstdint>
#include <string>
#include <vector>

#include "option_groups.h"
#include "option_values.h"

namespace vidproc::tool {
namespace {

/// Fields that vidproc_pre_options and vidproc_post_options have both.
template <typename Settings>
void AddScaling(CLI::App& command, Settings& settings) {
  AddChoice<vidproc_filter>(command, "--filter", "NAME", settings.filter,
                            {{"automatic", VIDPROC_FILTER_AUTOMATIC},
                             {"bilinear", VIDPROC_FILTER_BILINEAR},
                             {"catmull-rom", VIDPROC_FILTER_CATMULL_ROM},
                             {"bicubic", VIDPROC_FILTER_CATMULL_ROM},
                             {"mitchell", VIDPROC_FILTER_MITCHELL},
                             {"lanczos", VIDPROC_FILTER_LANCZOS},
                             {"area", VIDPROC_FILTER_AREA},
                             {"gaussian", VIDPROC_FILTER_GAUSSIAN},
                             {"hamming-sinc", VIDPROC_FILTER_HAMMING_SINC},
                             {"two-sincs", VIDPROC_FILTER_TWO_SINCS}},
                            "how to scale (default automatic)");
  AddChoice<std::int32_t>(command, "--taps", "N", settings.taps, {{"8", 8}, {"16", 16}},
                          "taps of a row, twice as many as of a column (default 16)");
  AddChoice<vidproc_alignment>(command, "--alignment", "HOW", settings.alignment,
                               {{"centres", VIDPROC_ALIGNMENT_CENTRES}, {"corners", VIDPROC_ALIGNMENT_CORNERS}},
                               "what of the pictures coincides: their areas (default) or their first samples");
  AddNumber(command, "--softening", settings.softening, 0, 255,
            "width of the last three filters, in 16ths of a sample");
  AddNumber(command, "--lobes", settings.lobes, 1, 16, "lobes of two-sincs (default 3)");
  AddNumber(command, "--sharpen", settings.sharpening, 0, 16, "sharpening, 0 to 16 (default 0)");
}

template <typename Settings>
void AddFinish(CLI::App& command, Settings& settings) {
  AddValue(command, "--luma", "GAIN:OFFSET", "GAIN:OFFSET with a gain of 1 to 127 and an offset of -255 to 255",
           "luma becomes (luma - OFFSET) x GAIN / 64", [&settings](const std::string& text) {
             return TakeNumbers(text, ':', 2, {{settings.luma_gain, 1, 127}, {settings.luma_offset, -255, 255}});
           });
  AddNumber(command, "--dither", settings.dither_level, 0, 12, "luma noise against banding, 0 to 12 (default 0)");
}

/// Set before all other options, which change what it says.
template <typename Settings>
void AddPreset(CLI::App& command, Settings& settings, const char* (*nameOf)(std::int32_t)) {
  std::vector<std::string> names;
  for (std::int32_t number = 0; nameOf(number) != nullptr; ++number) names.emplace_back(nameOf(number));
  AddWord(command, "--preset", "NAME", names, "settings to start from (default " + names.front() + ")",
          [&settings](const std::string& name) { settings = Settings(name.c_str()); });
}

/// Explicit denoising: neighbours and history as other options say them.
bool TakeDenoising(const std::string& text, vidproc::PreOptions& pre) {
  if (text == "auto") {
    pre.denoise_auto = 100;
    return true;
  }
  if (text.starts_with("auto:")) return TakeNumber(text.substr(5), 1, 400, pre.denoise_auto);
  pre.denoise_auto = 0;
  pre.denoise_edge = 0;
  pre.temporal_strength = 0;
  if (text == "off") return true;
  pre.denoise_softening = 100;
  pre.denoise_taps = 16;
  pre.temporal_strength = 100;
  pre.temporal_shift = 0;
  return TakeNumbers(text, ':', 1,
                     {{pre.denoise_edge, 1, 8},
                      {pre.denoise_softening, 0, 255},
                      {pre.denoise_taps, 8, 16},
                      {pre.denoise_passes, 1, 3}}) &&
         pre.denoise_taps % 8 == 0;
}

void AddDenoising(CLI::App& command, vidproc::PreOptions& pre) {
  AddValue(command, "--denoise", "HOW",
           "auto, auto:PERCENT 1 to 400, off, or EDGE 1 to 8, SOFTENING 0 to 255, TAPS 8 or 16, PASSES 1 to 3",
           "auto[:PERCENT] follows the camera's noise; off; or EDGE[:SOFTENING[:TAPS[:PASSES]]] averages neighbours "
           "that differ little, EDGE 1 most and 8 least, as in 1:100:16:1, and takes --temporal 100:0",
           [&pre](const std::string& text) { return TakeDenoising(text, pre); });
  AddValue(command, "--temporal", "STRENGTH[:SHIFT]", "off, or STRENGTH 0 to 127, or with :SHIFT 0 to 8",
           "weight of the frame before, and how soon change outweighs it; without --denoise it alone denoises",
           [&pre](const std::string& text) {
             pre.denoise_auto = 0;
             pre.temporal_shift = 0;
             if (text == "off") pre.temporal_strength = 0;
             return text == "off" ||
                    TakeNumbers(text, ':', 1, {{pre.temporal_strength, 0, 127}, {pre.temporal_shift, 0, 8}});
           });
  command.add_flag_callback(
      "--motion-smoothing", [&pre] { pre.motion_smoothing = 1; }, "average all neighbours where the picture moves");
}

}  // namespace

void AddPreSettings(CLI::App& command, vidproc::PreOptions& pre) {
  AddPreset(command, pre, vidproc_pre_preset);
  AddDenoising(command, pre);
  AddScaling(command, pre);
  AddFinish(command, pre);
}

void AddPostSettings(CLI::App& command, vidproc::PostOptions& post) {
  AddPreset(command, post, vidproc_post_preset);
  AddNumber(command, "--deblock", post.deblock_level, 21, 255,
            "smooth the borders of 8x8 blocks, for codecs without a loop filter, 21 (weakest) to 255 (default: none)");
  AddScaling(command, post);
  AddFinish(command, post);
}

void AddFilterSettings(CLI::App& command, vidproc::PreOptions& pre) { AddScaling(command, pre); }

}  // namespace vidproc::tool
