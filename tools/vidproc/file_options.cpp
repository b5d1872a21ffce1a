// Options of what is read and written; see option_groups.h.
#include <string>

#include "option_groups.h"
#include "option_values.h"
#include "output_format.h"

namespace vidproc::tool {
namespace {

void AddPixelFormat(CLI::App& command, const std::string& name, AVPixelFormat& format, const std::string& help) {
  const std::string known = ": i420, i422, nv12, uyvy, yuyv or FFmpeg's name of another";
  AddValue(command, name, "FORMAT", "a pixel format" + known, help + known, [&format](const std::string& text) {
    format = ParsePixelFormat(text);
    return format != AV_PIX_FMT_NONE;
  });
}

/// A text that whoever uses it checks.
void AddName(CLI::App& command, const std::string& name, const std::string& type, std::string& value,
             const std::string& help) {
  AddValue(command, name, type, "a name: it is empty", help, [&value](const std::string& text) {
    value = text;
    return !text.empty();
  });
}

}  // namespace

void AddInput(CLI::App& command, InputOptions& input) {
  AddPath(command, "-i,--input,IN", "", input.path,
          "what to read: a clip, Y4M, raw frames, pictures (f%03d.png), - for standard input; absent: --synthetic");
  command.add_flag("--synthetic", input.synthetic, "render a camera scene instead of reading");
  AddScene(command, input);
  AddPixelFormat(command, "--input-csp", input.rawFormat,
                 "IN holds raw frames of this format (default: by its ending)");
  AddSize(command, "--input-res", input.rawSize, "size of raw frames");
  AddValue(command, "--fps", "RATE", "a rate such as 30 or 30000/1001",
           "rate of raw frames and of pictures (default 25)", [&input](const std::string& text) {
             std::int32_t frames = 0, seconds = 0;
             input.frameRate = text;
             return TakeNumbers(text, '/', 1, {{frames, 1, 1000000}, {seconds, 1, 1000000}});
           });
  AddNumber(command, "--skip,--seek", input.skip, 0, 1000000000, "leave out the first N frames");
  AddNumber(command, "--frames", input.frames, 1, 1000000000, "take at most N frames (synthetic scene: 150)");
  AddNumber(command, "--seed", input.seed, 0, 0xffffffff,
            "start of the noise of --dither and of the synthetic scene (default 1)");
}

void AddScene(CLI::App& command, InputOptions& input) {
  AddSize(command, "--synthetic-size", input.syntheticSize, "size of the synthetic scene (default 1280x720)");
  AddNumber(command, "--synthetic-noise", input.syntheticNoise, 0, 1000,
            "noise of the synthetic scene in percent of a webcam's (default 100)");
}

void AddOutput(CLI::App& command, OutputOptions& output) {
  AddPath(command, "-o,--output", "OUT", output.path,
          "what to write, by its ending: .mp4, .mkv, .y4m, .png, f%03d.png, raw .uyvy .nv12 .yuv, others that FFmpeg "
          "knows; - for standard output (Y4M); /dev/null for nothing");
  AddName(command, "-f,--format", "MUXER", output.muxer,
          "container, where OUT does not tell: rawvideo, matroska, md5, ...");
  AddName(command, "-c,--codec", "NAME", output.codec,
          "FFmpeg's encoder: libx264, ffv1, ... (default: the container's)");
  AddValue(command, "--crf", "N", "a number from 0 to 63", "quality of libx264 and others, less is better (default 18)",
           [&output](const std::string& text) { return TakeNumber(text, 0, 63, output.crf.emplace()); });
  AddWord(command, "--encoder-preset", "NAME",
          {"ultrafast", "superfast", "veryfast", "faster", "fast", "medium", "slow", "slower", "veryslow", "placebo"},
          "effort of libx264 and libx265", [&output](const std::string& word) { output.effort = word; });
  AddPixelFormat(command, "--output-csp", output.format, "format of the frames in OUT");
  AddOpenSize(command, "-s,--size", output.size,
              "size to make; 640x or x360: the other side by the picture's shape (default: the input's)");
  AddChoice<Fit>(command, "--fit", "HOW", output.fit,
                 {{"shrink", Fit::kShrink}, {"pad", Fit::kPad}, {"crop", Fit::kCrop}, {"stretch", Fit::kStretch}},
                 "a picture of another shape than WxH becomes the largest that goes in (shrink, default), with black "
                 "around it (pad), loses its edges, or is stretched");
  AddPath(command, "--compare", "FILE.png", output.comparePath, "draw the last frame before and after, side by side");
  AddPath(command, "--stats", "FILE", output.statsPath,
          "write a JSON line for every frame: number, seconds, nanoseconds that it took");
  AddPath(command, "--framemd5", "FILE", output.md5Path, "write the MD5 of every frame, as FFmpeg's framemd5 does");
}

}  // namespace vidproc::tool
