// The tool's option parser and its readers of raw frames and Y4M: any words and any bytes end in options and frames or
// in a ToolError.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "targets.h"
#include "tools/vidproc/errors.h"
#include "tools/vidproc/ffmpeg_log.h"
#include "tools/vidproc/frame_reader.h"
#include "tools/vidproc/options.h"

namespace fuzzing {
namespace {

namespace tool = vidproc::tool;

constexpr int kMostFrames = 4;
constexpr std::int64_t kMostPixels = 1 << 16;

constexpr const char* kCommands[] = {"pre", "post", "exposure", "filters", "bench", "info", "object"};
// Without --cpu, which would hold for all inputs after it.
constexpr char kOptions[] =
    "--adaptive --alignment --codec --compare --crf --deblock --denoise --dither --encoder-preset --enhance --filter "
    "--fit --format --fps --framemd5 --frames --from --input --input-csp --input-res --json --lobes --luma "
    "--motion-smoothing --output --output-csp --plot --preset --quiet --seconds --seed --sharpen --size --skip "
    "--soften --softening --stats --streams --synthetic --synthetic-noise --synthetic-size --taps --taps16 "
    "--temporal --to --version -- -i -o -q -s nv12 pre";
constexpr const char* kValues[] = {"nv12",      "uyvy422",   "yuv420p", "auto", "off",       "webcam", "lanczos",
                                   "640x360",   "x",         "-1",      "1e9",  "a:b:c",     "80:3",   "%d",
                                   "/dev/null", "f%03d.png", "-",       "",     "30000/1001"};
constexpr const char* kFormats[] = {"nv12", "uyvy422", "yuyv422", "yuv420p", "yuv422p", "gray", "rgb24", "none"};
constexpr AVPixelFormat kAccepted[] = {AV_PIX_FMT_NV12, AV_PIX_FMT_UYVY422};

std::string DrawOption(Input& input) {
  static const std::vector<std::string> kWords = [] {
    std::istringstream words(kOptions);
    return std::vector<std::string>{std::istream_iterator<std::string>(words), {}};
  }();
  return kWords[input.Byte() % kWords.size()];
}
std::string DrawNumber(Input& input) {
  return std::to_string(input.OneIn(6) ? static_cast<std::int32_t>(input.Any()) : input.Between(1, 40));
}
std::string DrawSize(Input& input) {
  const std::string width = DrawNumber(input);
  return width + "x" + DrawNumber(input);
}

/// A file that lives as long as this, of what is left of the input behind a header that may be true.
class DrawnFile {
 public:
  DrawnFile(Input& input, bool isRaw)
      : path(
            (std::filesystem::temp_directory_path() / ("vidproc-fuzz-" + std::to_string(getpid()) + ".y4m")).string()) {
    std::ofstream file(path, std::ios::binary);
    if (!isRaw && !input.OneIn(6)) {
      const std::string width = DrawNumber(input);
      file << "YUV4MPEG2 W" << width << " H" << DrawNumber(input) << " F25:1";
      if (input.OneIn(2)) file << " C" << input.Pick({"420jpeg", "422", "444", "mono", "420p10", "411"});
      file << "\nFRAME\n";
    }
    const int repetitions = input.Between(1, 64);
    std::string bytes;
    while (!input.IsEmpty()) bytes += static_cast<char>(input.Byte());
    for (int i = 0; i < repetitions; ++i) file << bytes;
  }
  ~DrawnFile() { std::filesystem::remove(path); }
  DrawnFile(const DrawnFile&) = delete;
  DrawnFile& operator=(const DrawnFile&) = delete;

  const std::string path;
};

void ReadFrames(const tool::InputOptions& options) {
  if (options.synthetic || std::int64_t{options.rawSize.width} * options.rawSize.height > kMostPixels) return;
  tool::FrameReader reader(options, kAccepted);
  for (int frame = 0; frame < kMostFrames && reader.Read() != nullptr; ++frame) {
  }
}

}  // namespace

void FuzzTool(Input input) {
  std::vector<std::string> words = {"vidproc", input.Pick(kCommands)};
  const bool isRaw = input.OneIn(2);
  if (isRaw) words.insert(words.end(), {"--input-csp", input.Pick(kFormats), "--input-res", DrawSize(input)});
  for (int options = input.Between(0, 6); options > 0; --options) {
    words.push_back(DrawOption(input));
    const int kind = input.Between(0, 3);
    if (kind > 0) words.push_back(kind == 1 ? DrawNumber(input) : kind == 2 ? DrawSize(input) : input.Pick(kValues));
  }
  const DrawnFile file(input, isRaw);
  words.push_back(file.path);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  tool::SilenceNotes();
  tool::CaptureFfmpegLog();
  try {
    const auto options = tool::ParseOptions(static_cast<int>(words.size()), arguments.data());
    if (options && !options->input.path.empty()) ReadFrames(options->input);
  } catch (const tool::ToolError& error) {
    Require(error.status != tool::kSuccess && error.what()[0] != '\0', "a failure has a status and a text");
  }
}

}  // namespace fuzzing
