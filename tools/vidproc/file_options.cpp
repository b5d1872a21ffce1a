// Options of what is read and written; see option_groups.h.
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "option_groups.h"
#include "option_values.h"
#include "output_format.h"

namespace vidproc::tool {
namespace {

void AddPixelFormat(CLI::App& command, const std::string& name, AVPixelFormat& format, const std::string& help) {
  AddValue(command, name, "FORMAT", "a pixel format: i420, i422, nv12, uyvy, yuyv, or FFmpeg's name of another",
           help + ": i420, i422, nv12, uyvy, yuyv or FFmpeg's name of another", [&format](const std::string& text) {
             format = ParsePixelFormat(text);
             return format != AV_PIX_FMT_NONE;
           });
}

}  // namespace

void AddInput(CLI::App& command, InputOptions& input) {
  AddPath(command, "-i,--input,IN", "", input.path,
          "what to read: a clip, Y4M, raw frames, pictures (f%03d.png), - for standard input; absent: --synthetic");
  command.add_flag("--synthetic", input.synthetic, "render a camera scene instead of reading");
  AddSize(command, "--synthetic-size", input.syntheticSize, "size of the synthetic scene (default 1280x720)");
  AddNumber(command, "--synthetic-noise", input.syntheticNoise, 0, 1000,
            "noise of the synthetic scene in percent of a webcam's (default 100)");
  AddPixelFormat(command, "--input-csp", input.rawFormat,
                 "IN holds raw frames of this format (default: by its ending)");
  AddSize(command, "--input-res", input.rawSize, "size of raw frames");
  AddValue(command, "--fps", "RATE", "a rate such as 30 or 30000/1001",
           "rate of raw frames and of pictures (default 25)", [&input](const std::string& text) {
             const auto numbers = ParseNumbers(text, '/');
             input.frameRate = text;
             return numbers && numbers->size() <= 2 && numbers->front() > 0 && numbers->back() > 0 &&
                    numbers->front() <= 1000000 && numbers->back() <= 1000000;
           });
  AddNumber(command, "--skip,--seek", input.skip, 0, 1000000000, "leave out the first N frames");
  AddNumber(command, "--frames", input.frames, 1, 1000000000, "take at most N frames (synthetic scene: 150)");
  AddNumber(command, "--seed", input.seed, 0, 0xffffffff,
            "start of the noise of --dither and of the synthetic scene (default 1)");
}

namespace {

void AddSizeRequest(CLI::App& command, OutputOptions& output) {
  AddValue(command, "-s,--size", "WxH", "WxH, Wx or xH with a width of 2 to 16384 and a height of 1 to 16384",
           "size to make; 640x or x360: the other side by the picture's shape (default: the input's)",
           [&output](const std::string& text) {
             const std::size_t middle = text.find('x');
             if (middle == std::string::npos || text.size() == 1) return false;
             const auto side = [](const std::string& digits, int least, int& value) {
               if (digits.empty()) return true;
               const std::optional<std::int64_t> number = ParseNumber(digits);
               value = number && *number <= 16384 ? static_cast<int>(*number) : 0;
               return value >= least;
             };
             return side(text.substr(0, middle), 2, output.size.width) &&
                    side(text.substr(middle + 1), 1, output.size.height);
           });
  AddChoice<Fit>(command, "--fit", "HOW", output.fit,
                 {{"shrink", Fit::kShrink}, {"pad", Fit::kPad}, {"crop", Fit::kCrop}, {"stretch", Fit::kStretch}},
                 "a picture of another shape than WxH becomes the largest that goes in (shrink, default), with black "
                 "around it (pad), loses its edges, or is stretched");
}

std::vector<std::pair<std::string, std::string>> EncoderPresets() {
  std::vector<std::pair<std::string, std::string>> choices;
  for (const char* name :
       {"ultrafast", "superfast", "veryfast", "faster", "fast", "medium", "slow", "slower", "veryslow", "placebo"}) {
    choices.emplace_back(name, name);
  }
  return choices;
}

}  // namespace

void AddOutput(CLI::App& command, OutputOptions& output) {
  AddPath(command, "-o,--output", "OUT", output.path,
          "what to write, by its ending: .mp4, .mkv, .y4m, .png, f%03d.png, raw .uyvy .nv12 .yuv, others that FFmpeg "
          "knows; - for standard output (Y4M); /dev/null for nothing");
  AddValue(command, "-f,--format", "MUXER", "a format",
           "container, where OUT does not tell: rawvideo, matroska, md5, ...", [&output](const std::string& text) {
             output.muxer = text;
             return !text.empty();
           });
  AddValue(command, "-c,--codec", "NAME", "an encoder",
           "FFmpeg's encoder: libx264, ffv1, ... (default: the container's)", [&output](const std::string& text) {
             output.codec = text;
             return !text.empty();
           });
  AddValue(command, "--crf", "N", "a number from 0 to 63", "quality of libx264 and others, less is better (default 18)",
           [&output](const std::string& text) {
             std::size_t end = 0;
             try {
               output.crf = std::stod(text, &end);
             } catch (const std::exception&) {
               return false;
             }
             return end == text.size() && *output.crf >= 0 && *output.crf <= 63;
           });
  AddChoice<std::string>(command, "--encoder-preset", "NAME", output.effort, EncoderPresets(),
                         "effort of libx264 and libx265");
  AddPixelFormat(command, "--output-csp", output.format, "format of the frames in OUT");
  AddSizeRequest(command, output);
  AddPath(command, "--compare", "FILE.png", output.comparePath, "draw the last frame before and after, side by side");
  AddPath(command, "--stats", "FILE", output.statsPath,
          "write a JSON line for every frame: number, seconds, nanoseconds that it took");
  AddPath(command, "--framemd5", "FILE", output.md5Path, "write the MD5 of every frame, as FFmpeg's framemd5 does");
}

}  // namespace vidproc::tool
