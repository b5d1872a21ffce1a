// The command line, read with CLI11; see options.h.
#include "options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <map>
#include <optional>

#include "errors.h"
#include "file_io.h"
#include "frame_writer.h"

namespace vidproc::tool {
namespace {

constexpr int kMaxSize = 8192;
const char* const kSizeRange = "WxH with an even width of 2 to 8192 and a height of 1 to 8192";

std::optional<std::int64_t> ParseNumber(const std::string& text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

struct Pair {
  int first = 0;
  int second = 0;
  bool Within(int firstLow, int firstHigh, int secondLow, int secondHigh) const {
    return first >= firstLow && first <= firstHigh && second >= secondLow && second <= secondHigh;
  }
};

/// "A<separator>B" as two numbers of sensible size.
std::optional<Pair> ParsePair(const std::string& text, char separator) {
  const std::size_t middle = text.find(separator);
  if (middle == std::string::npos) return std::nullopt;
  const std::optional<std::int64_t> first = ParseNumber(text.substr(0, middle));
  const std::optional<std::int64_t> second = ParseNumber(text.substr(middle + 1));
  const auto small = [](std::int64_t value) { return value >= -1000000 && value <= 1000000; };
  if (!first || !second || !small(*first) || !small(*second)) return std::nullopt;
  return Pair{static_cast<int>(*first), static_cast<int>(*second)};
}

/// A whole number; whatever else is given, the message tells the range.
CLI::Option* AddNumber(CLI::App& command, const std::string& name, std::int64_t& value, std::int64_t low,
                       std::int64_t high, const std::string& help) {
  return command
      .add_option_function<std::string>(
          name,
          [name, &value, low, high](const std::string& text) {
            const std::optional<std::int64_t> number = ParseNumber(text);
            if (!number || *number < low || *number > high) {
              throw CLI::ValidationError(name, "\"" + text + "\" is not a whole number from " + std::to_string(low) +
                                                   " to " + std::to_string(high));
            }
            value = *number;
          },
          help)
      ->type_name("N");
}

CLI::Option* AddSize(CLI::App& command, const std::string& name, Size& size, const std::string& help) {
  return command
      .add_option_function<std::string>(
          name,
          [name, &size](const std::string& text) {
            const auto pair = ParsePair(text, 'x');
            if (!pair || !pair->Within(2, kMaxSize, 1, kMaxSize) || pair->first % 2 != 0) {
              throw CLI::ValidationError(name, "\"" + text + "\" is not " + kSizeRange);
            }
            size = {pair->first, pair->second};
          },
          help)
      ->type_name("WxH");
}

/// The name of a file to read or write; an empty one is most likely a shell variable that is not set.
CLI::Option* AddPath(CLI::App& command, const std::string& name, std::string& path, const std::string& help) {
  return command.add_option_function<std::string>(
      name,
      [name, &path](const std::string& text) {
        if (text.empty()) throw CLI::ValidationError(name, "the name is empty");
        path = text;
      },
      help);
}

void AddTemporal(CLI::App& command, std::optional<Temporal>& temporal) {
  command
      .add_option_function<std::string>(
          "--temporal",
          [&temporal](const std::string& text) {
            const bool alone = text.find(':') == std::string::npos;
            const auto pair = ParsePair(alone ? text + ":3" : text, ':');
            if (!pair || !pair->Within(0, 127, 0, 8)) {
              throw CLI::ValidationError("--temporal",
                                         "\"" + text + "\" is not STRENGTH 0 to 127, or with :SHIFT 0 to 8");
            }
            temporal = Temporal{pair->first, pair->second};
          },
          "weight of the frame before, 0 to 127, and how soon change outweighs it, 0 to 8 (default 80:3)")
      ->type_name("STRENGTH[:SHIFT]");
}

CLI::Option* AddLuma(CLI::App& command, std::optional<LumaShift>& luma) {
  return command
      .add_option_function<std::string>(
          "--luma",
          [&luma](const std::string& text) {
            const auto pair = ParsePair(text, ':');
            if (!pair || !pair->Within(-127, 127, -255, 255) || pair->first == 0) {
              throw CLI::ValidationError("--luma", "\"" + text +
                                                       "\" is not GAIN:OFFSET with a gain of -127 to 127 but 0 "
                                                       "(64 keeps luma) and an offset of -255 to 255");
            }
            luma = LumaShift{pair->first, pair->second};
          },
          "luma becomes (luma - OFFSET) x GAIN / 64; plain scaler only")
      ->type_name("GAIN:OFFSET");
}

void AddCpu(CLI::App& command, std::optional<Level>& cpu) {
  command
      .add_option_function<std::string>(
          "--cpu",
          [&cpu](const std::string& text) {
            std::string available;
            for (const Level level : kAllLevels) {
              if (!IsLevelAvailable(level)) continue;
              if (text == LevelName(level)) cpu = level;
              available += std::string(available.empty() ? "" : ", ") + LevelName(level);
            }
            if (!cpu)
              throw CLI::ValidationError("--cpu", "\"" + text + "\" is not one of this machine's levels: " + available);
          },
          "instruction set to use (see vidproc info); all give the same bytes")
      ->type_name("LEVEL");
}

/// `seeded`: what --seed starts besides the synthetic scene's noise.
void AddInput(CLI::App& command, InputOptions& input, const std::string& seeded = "") {
  CLI::Option* path =
      AddPath(command, "IN", input.path, "file to read, - for Y4M from standard input; absent: --synthetic")
          ->type_name("");
  command.add_flag("--synthetic", input.synthetic, "render a camera scene instead of reading a file")->excludes(path);
  AddSize(command, "--synthetic-size", input.syntheticSize, "size of the synthetic scene (default 1280x720)")
      ->excludes(path);
  AddNumber(command, "--synthetic-noise", input.syntheticNoise, 0, 1000,
            "noise of the synthetic scene in percent of a webcam's (default 100)")
      ->excludes(path);
  CLI::Option* raw =
      command.add_option("--raw", input.rawFormat, "IN holds raw frames: uyvy422 or nv12, taken as 30 a second")
          ->check(CLI::IsMember({"uyvy422", "nv12"}))
          ->needs(path);
  CLI::Option* rawSize = AddSize(command, "--raw-size", input.rawSize, "size of the raw frames");
  raw->needs(rawSize);
  rawSize->needs(raw);
  AddNumber(command, "--frames", input.frames, 1, 1000000000,
            "process at most N frames (synthetic: 150; .png: the last of N, default 1)");
  AddNumber(command, "--seed", input.seed, 0, 0xffffffff,
            "start of " + seeded + "the synthetic scene's noise (default 1)");
}

void AddOutput(CLI::App& command, OutputOptions& output) {
  AddPath(command, "-o,--output", output.path,
          "file to write, by its ending: .y4m, .mkv (lossless), .mp4 (x264, CRF 18), .png (one frame), "
          ".uyvy or .nv12 (raw); - for Y4M on standard output")
      ->type_name("OUT");
  AddSize(command, "--size", output.size, "size of the frames to make (default: the input's)");
  AddPath(command, "--compare", output.comparePath, "write the last frame before and after, side by side")
      ->type_name("FILE.png");
  AddPath(command, "--stats", output.statsPath, "write a JSON line for every frame: number, nanoseconds, kernel")
      ->type_name("FILE");
  command.add_flag("--md5", output.md5,
                   "print the MD5 of the frames' bytes (on standard error where standard output is taken)");
}

void AddScaler(CLI::App& command, ScalerOptions& scaler, bool withDither) {
  AddNumber(command, "--enhance", scaler.enhance, 0, 32, "sharpening, 0 to 32 (default 0)");
  AddNumber(command, "--soften", scaler.soften, 0, 64, "low-pass softening, 0 to 64 (default 0)");
  if (!withDither) return;
  AddNumber(command, "--dither", scaler.dither, 0, 12, "luma noise against banding, 0 to 12 (default 0)");
}

void AddPre(CLI::App& app, Options& options) {
  CLI::App& command = *app.add_subcommand("pre", "Pre-process camera frames: scale, denoise, sharpen, dither");
  command.callback([&options] { options.command = Command::kPre; });
  AddInput(command, options.input, "the dither noise and of ");
  AddOutput(command, options.output);
  AddScaler(command, options.scaler, true);
  CLI::Option* adaptive =
      AddNumber(command, "--adaptive", options.pre.adaptive, 1, 8, "edge-preserving filter taps, 1 (weakest) to 8");
  CLI::Option* taps = command.add_flag("--taps16", options.pre.taps16, "16 + 8 taps instead of 8 + 4")->needs(adaptive);
  CLI::Option* motion =
      command.add_flag("--motion-smoothing", options.pre.motionSmoothing, "full low-pass where the picture moves");
  motion->needs(adaptive)->excludes(taps);
  AddTemporal(command, options.pre.temporal);
  AddLuma(command, options.pre.luma)->excludes(adaptive)->excludes(command.get_option("--temporal"));
  AddCpu(command, options.cpu);
}

void AddPost(CLI::App& app, Options& options) {
  CLI::App& command = *app.add_subcommand("post", "Post-process decoded frames: deblock, scale, sharpen, dither");
  command.callback([&options] { options.command = Command::kPost; });
  AddInput(command, options.input, "the dither noise and of ");
  AddOutput(command, options.output);
  AddScaler(command, options.scaler, true);
  AddNumber(command, "--deblock", options.deblock, 21, 51, "smooth 8x8 block edges, 21 (weakest) to 51");
  AddCpu(command, options.cpu);
}

void AddOthers(CLI::App& app, Options& options) {
  CLI::App& nv12 = *app.add_subcommand("nv12", "Scale 4:2:0 frames (luma plane, interleaved chroma plane)");
  nv12.callback([&options] { options.command = Command::kNv12; });
  AddInput(nv12, options.input);
  AddOutput(nv12, options.output);
  AddCpu(nv12, options.cpu);

  CLI::App& exposure =
      *app.add_subcommand("exposure", "Watch the brightness; print when it drifts and when it settles");
  exposure.callback([&options] { options.command = Command::kExposure; });
  AddInput(exposure, options.input);
  exposure.add_flag("--json", options.json, "print a JSON line for every frame: result and brightness");
  AddPath(exposure, "--plot", options.plotPath, "draw the brightness over time with the events")->type_name("FILE.png");
  AddCpu(exposure, options.cpu);

  CLI::App& filters = *app.add_subcommand("filters", "Print the resampling filter banks for a change of size");
  filters.callback([&options] { options.command = Command::kFilters; });
  AddSize(filters, "--from", options.filters.from, "size of the source frames")->required();
  AddSize(filters, "--to", options.filters.to, "size of the frames to make")->required();
  filters
      .add_option_function<std::string>(
          "--role", [&options](const std::string& role) { options.filters.post = role == "post"; },
          "pre (camera side) or post (decoder side)")
      ->check(CLI::IsMember({"pre", "post"}))
      ->required();
  filters.add_flag("--taps16", options.pre.taps16, "16 + 8 taps instead of 8 + 4 (pre only)");
  AddScaler(filters, options.scaler, false);
  AddPath(filters, "--plot", options.plotPath, "draw the taps and the frequency response")->type_name("FILE.png");

  CLI::App& info = *app.add_subcommand("info", "Print version, processor, levels and the level in use");
  info.callback([&options] { options.command = Command::kInfo; });
  AddCpu(info, options.cpu);
}

void RefuseTheInput(const InputOptions& input, const std::string& option, const std::string& path) {
  if (input.path.empty() || !IsSameFile(input.path, path)) return;
  throw BadUsage(option, OutputName(path) + " is the file that is read");
}

/// Every result goes to a place of its own, none to the input's, and the endings of names are true.
void CheckResults(const Options& options) {
  const OutputOptions& output = options.output;
  const struct {
    const char* option;
    const std::string& path;
    bool isPicture;
  } results[] = {{"-o", output.path, false},
                 {"--compare", output.comparePath, true},
                 {"--stats", output.statsPath, false},
                 {"--plot", options.plotPath, true}};
  std::map<std::string, std::string> takenBy;
  if (options.command == Command::kExposure || options.command == Command::kFilters) {
    takenBy["-"] = "the lines that this command prints";
  }
  for (const auto& [option, path, isPicture] : results) {
    if (path.empty()) continue;
    const std::string place = path == "-" ? path : std::filesystem::absolute(path).lexically_normal().string();
    const auto [other, isNew] = takenBy.try_emplace(place, option);
    if (!isNew) throw BadUsage(option, OutputName(path) + " is taken by " + other->second);
    RefuseTheInput(options.input, option, path);
    if (isPicture && path != "-" && !path.ends_with(".png")) {
      throw BadUsage(option, path + ": the name must end in .png");
    }
  }
  if (output.md5) RefuseTheInput(options.input, "--md5", "-");
  if (options.command == Command::kExposure) RefuseTheInput(options.input, "exposure", "-");
  if (!output.path.empty()) CheckOutputName(output.path, LayoutOf(options.command));
}

/// Rules that span several options.
void Check(Options& options) {
  const OutputOptions& output = options.output;
  const bool makesFrames =
      options.command == Command::kPre || options.command == Command::kPost || options.command == Command::kNv12;
  if (makesFrames && output.path.empty() && output.comparePath.empty() && output.statsPath.empty() && !output.md5) {
    throw BadUsage("-o", "name a file to write (.y4m, .mkv, .mp4, .png, .uyvy, .nv12, or - for Y4M)");
  }
  CheckResults(options);
  if (options.filters.post && options.pre.taps16) throw BadUsage("--taps16", "only --role pre has long taps");
  const std::string& path = options.input.path;
  if (path.empty()) options.input.synthetic = true;
  if (options.input.rawFormat.empty() && (path.ends_with(".uyvy") || path.ends_with(".nv12"))) {
    throw BadUsage("IN", path + ": raw frames need --raw and --raw-size");
  }
}

}  // namespace

std::optional<Options> ParseOptions(int argc, char** argv) {
  Options options;
  CLI::App app("Video pre- and post-processing for conferencing: scaling, denoising, deblocking, dither, exposure.",
               "vidproc");
  app.set_version_flag("--version", "vidproc " VIDPROC_VERSION);
  app.require_subcommand(1);
  AddPre(app, options);
  AddPost(app, options);
  AddOthers(app, options);
  app.footer(  // after the commands, which would inherit it
      "Without IN a synthetic camera scene is processed. Try:\n"
      "  vidproc pre --size 640x360 --adaptive 4 -o scene.mp4 --compare before-after.png\n"
      "Exit status: 0 done, 1 cannot read or write, 2 bad usage.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    app.exit(asked);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw ToolError(kUsage, error.what());
  }
  Check(options);
  return options;
}

}  // namespace vidproc::tool
