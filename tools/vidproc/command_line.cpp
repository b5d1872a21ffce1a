// The command line, read with CLI11; see options.h.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <system_error>

#include "commands.h"
#include "errors.h"
#include "file_io.h"
#include "help_pages.h"
#include "option_groups.h"
#include "option_values.h"
#include "options.h"
#include "output_format.h"

namespace vidproc::tool {
namespace {

void AddCpu(CLI::App& command, bool& quiet) {
  AddValue(command, "--cpu", "LEVEL", "one of this machine's levels: " + LevelsHere(),
           "instruction set to use (see vidproc info); all give the same bytes", [](const std::string& text) {
             return vidproc_cap_level(text.c_str()) == VIDPROC_OK && text == vidproc_level();
           });
  command.add_flag("-q,--quiet", quiet, "print errors only");
}

/// A command that turns frames into others: what it reads and writes, and between them its own settings.
template <typename AddSettings>
void AddFrameCommand(CLI::App& parent, const char* name, const char* help, Command kind, Options& options,
                     AddSettings addSettings) {
  CLI::App& command = *parent.add_subcommand(name, help);
  command.callback([&options, kind] { options.command = kind; });
  AddInput(command, options.input);
  AddOutput(command, options.output);
  addSettings(command);
  AddCpu(command, options.quiet);
}

void AddObject(CLI::App& app, Options& options) {
  CLI::App& object = *app.add_subcommand("object", "The same by the older processor object, to compare with");
  object.require_subcommand(1);
  ObjectOptions& settings = options.object;
  const auto addCommon = [&settings](CLI::App& command) {
    AddNumber(command, "--enhance", settings.enhance, 0, 32, "sharpening, 0 to 32");
    AddNumber(command, "--soften", settings.soften, 0, 64, "softening, 0 to 64");
    AddNumber(command, "--dither", settings.dither, 0, 12, "luma noise, 0 to 12");
  };
  AddFrameCommand(object, "pre", "Its pre-processor, 2vuy", Command::kObjectPre, options, [&](CLI::App& command) {
    addCommon(command);
    AddNumber(command, "--adaptive", settings.adaptive, 0, 8, "edge-preserving taps, 1 (averages most) to 8; 0 off");
    command.add_flag("--taps16", settings.taps16, "16 + 8 taps instead of 8 + 4");
    command.add_flag("--motion-smoothing", settings.motionSmoothing, "full low-pass where the picture moves");
    AddValue(command, "--temporal", "STRENGTH[:SHIFT]", "STRENGTH 0 to 127, or with :SHIFT 0 to 8",
             "weight of the frame before (default 80:3)", [&settings](const std::string& text) {
               return TakeNumbers(text, ':', 1, {{settings.temporalStrength, 0, 127}, {settings.temporalShift, 0, 8}});
             });
  });
  AddFrameCommand(object, "post", "Its post-processor, 2vuy", Command::kObjectPost, options, [&](CLI::App& command) {
    addCommon(command);
    AddNumber(command, "--deblock", settings.deblock, 21, 51, "smooth 8x8 block edges, 21 to 51");
  });
  AddFrameCommand(object, "nv12", "Its scaler of 4:2:0 frames", Command::kObjectNv12, options, [](CLI::App&) {});
  for (CLI::App* command : object.get_subcommands([](CLI::App*) { return true; })) {
    command->remove_option(command->get_option("--fit"));  // it stretches
  }
}

void AddOthers(CLI::App& app, Options& options) {
  CLI::App& exposure =
      *app.add_subcommand("exposure", "Watch the brightness; print when it drifts and when it settles");
  exposure.callback([&options] { options.command = Command::kExposure; });
  AddInput(exposure, options.input);
  exposure.add_flag("--json", options.json, "print a JSON line for every frame: event and brightness");
  AddPath(exposure, "--plot", "FILE.png", options.plotPath, "draw the brightness over time with the events");
  AddCpu(exposure, options.quiet);

  CLI::App& filters = *app.add_subcommand("filters", "Print the filters that luma takes for a change of size");
  filters.callback([&options] { options.command = Command::kFilters; });
  AddSize(filters, "--from", options.from, "size of the source frames")->required();
  AddSize(filters, "--to", options.to, "size of the frames to make")->required();
  AddFilterSettings(filters, options.pre);
  AddPath(filters, "--plot", "FILE.png", options.plotPath, "draw the taps and the frequency response");

  CLI::App& bench =
      *app.add_subcommand("bench", "Count the streams of 30 frames a second that this machine pre-processes");
  bench.callback([&options] { options.command = Command::kBench; });
  AddValue(bench, "--streams", "[N]", "a whole number from 1 to 1024",
           "streams that each core takes turns on (default: as many as it carries)",
           [&options](const std::string& text) { return text.empty() || TakeNumber(text, 1, 1024, options.streams); })
      ->expected(0, 1)
      ->required();
  AddValue(bench, "--seconds", "S", "a number from 0.1 to 3600", "how long each count takes (default 5)",
           [&options](const std::string& text) { return TakeNumber(text, 0.1, 3600, options.seconds); });
  AddScene(bench, options.input);
  AddSize(bench, "-s,--size", options.output.size, "size to make (default: the scene's)");
  AddPreSettings(bench, options.pre);
  AddCpu(bench, options.quiet);

  CLI::App& info = *app.add_subcommand("info", "Print version, processor, levels and the level in use");
  info.callback([&options] { options.command = Command::kInfo; });
  AddCpu(info, options.quiet);
}

std::string PlaceOf(const std::string& path) {
  std::error_code failure;  // of what is no file, such as the other end of a pipe
  const auto place = std::filesystem::weakly_canonical(std::filesystem::absolute(path), failure);
  return path == "-" || failure ? path : place.string();
}

/// Every result goes to a place of its own, none to the input's, and the endings of pictures are true.
void CheckResults(const Options& options) {
  const OutputOptions& output = options.output;
  const struct {
    const char* option;
    const std::string& path;
    bool isPicture;
  } results[] = {{"-o", output.path, false},
                 {"--compare", output.comparePath, true},
                 {"--stats", output.statsPath, false},
                 {"--framemd5", output.md5Path, false},
                 {"--plot", options.plotPath, true}};
  std::map<std::string, std::string> takenBy;
  const bool printsLines = options.command == Command::kExposure || options.command == Command::kFilters;
  if (printsLines) takenBy["-"] = "the lines that this command prints";
  if (!options.input.path.empty()) InputFiles::Add(options.input.path);
  for (const auto& [option, path, isPicture] : results) {
    if (path.empty() || path == "/dev/null") continue;
    const std::string place = PlaceOf(path);
    const auto [other, isNew] = takenBy.try_emplace(place, option);
    if (!isNew) throw BadUsage(option, OutputName(path) + " is taken by " + other->second);
    if (InputFiles::Contain(path)) throw BadUsage(option, OutputName(path) + " is the file that is read; name another");
    const bool isPng = std::filesystem::path(path).extension() == ".png";
    if (isPicture && path != "-" && !isPng) throw BadUsage(option, path + ": the name must end in .png");
  }
  if (printsLines && InputFiles::Contain("-")) {
    throw BadUsage("standard output", "is the file that is read; print elsewhere");
  }
}

void CheckInput(InputOptions& input) {
  if (input.path.empty()) input.synthetic = true;
  if (input.synthetic && !input.path.empty()) throw BadUsage("--synthetic", "there is an input to read, " + input.path);
  if (input.synthetic) return;
  if (input.rawFormat == AV_PIX_FMT_NONE) input.rawFormat = RawFormatOf(input.path);
  const bool isRaw = input.rawFormat != AV_PIX_FMT_NONE, hasSize = input.rawSize.width > 0;
  if (isRaw && !hasSize) throw BadUsage("--input-res", "raw frames need their size, as in --input-res 640x480");
  if (!isRaw && hasSize) throw BadUsage("--input-csp", "say the format of the raw frames, as in --input-csp nv12");
}

/// Rules that span several options.
void Check(Options& options) {
  const OutputOptions& output = options.output;
  const bool makesFrames = MakesFrames(options.command);
  if (makesFrames && output.path.empty() && output.comparePath.empty() && output.statsPath.empty() &&
      output.md5Path.empty()) {
    throw BadUsage("-o", "name a file to write (.mp4, .mkv, .y4m, .png, .uyvy, .nv12), - for Y4M or /dev/null");
  }
  CheckInput(options.input);
  CheckResults(options);
  if (makesFrames && !output.path.empty()) ChooseFormat(output);
}

void RefuseUnknownCommand(const CLI::App& app, int argc, char** argv) {
  std::string known;
  bool isKnown = false;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    isKnown = isKnown || (argc > 1 && command->get_name() == argv[1]);
    if (!command->get_group().empty()) known += (known.empty() ? "" : ", ") + command->get_name();
  }
  if (argc < 2) throw ToolError(kUsage, "say what to do: " + known);
  if (!isKnown && argv[1][0] != '-') {
    throw ToolError(kUsage, std::string("\"") + argv[1] + "\" is not a command; there are " + known);
  }
}

}  // namespace

std::optional<Options> ParseOptions(int argc, char** argv) {
  Options options;
  CLI::App app("Video pre- and post-processing for conferencing: denoising, scaling, deblocking, dither, exposure.",
               "vidproc");
  app.set_version_flag("--version", std::string("vidproc ") + vidproc_version_string());
  app.require_subcommand(1);
  AddFrameCommand(app, "pre", "Pre-process camera frames: denoise, scale, sharpen, dither", Command::kPre, options,
                  [&](CLI::App& command) { AddPreSettings(command, options.pre); });
  AddFrameCommand(app, "post", "Post-process decoded frames: deblock, scale, sharpen, dither", Command::kPost, options,
                  [&](CLI::App& command) { AddPostSettings(command, options.post); });
  AddOthers(app, options);
  AddObject(app, options);
  std::string page;
  AddHelpPages(app, page);
  app.footer(  // after the commands, which would inherit it
      "Without IN a synthetic camera scene is processed. Try:\n"
      "  vidproc pre --size 640x360 -o scene.mp4 --compare before-after.png\n"
      "Exit status: 0 done, 1 cannot read or write, 2 bad usage.");
  try {
    RefuseUnknownCommand(app, argc, argv);
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    app.exit(asked);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw ToolError(kUsage, error.what());
  }
  if (!page.empty()) {
    PrintHelpPage(app, page);
    return std::nullopt;
  }
  Check(options);
  return options;
}

}  // namespace vidproc::tool
