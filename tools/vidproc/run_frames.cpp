// pre, post and nv12: read, process, write, and keep count.
extern "C" {
#include <libavutil/md5.h>
#include <libavutil/mem.h>
}

#include <array>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "commands.h"
#include "compare_picture.h"
#include "errors.h"
#include "file_io.h"
#include "frame_reader.h"
#include "frame_writer.h"
#include "image.h"
#include "processing.h"
#include "progress.h"

namespace vidproc::tool {
namespace {

/// MD5 over the frames' bytes, the same as md5sum gives for raw output.
class FrameDigest {
 public:
  FrameDigest() : state(OrBadAlloc(av_md5_alloc())) { av_md5_init(state.get()); }
  void Add(const Picture& picture) { av_md5_update(state.get(), picture.bytes.data(), picture.bytes.size()); }
  std::string Text() {
    std::array<std::uint8_t, 16> sum{};
    av_md5_final(state.get(), sum.data());
    std::string text;
    for (const std::uint8_t byte : sum) {
      text += "0123456789abcdef"[byte >> 4];
      text += "0123456789abcdef"[byte & 15];
    }
    return text;
  }

 private:
  struct Free {
    void operator()(AVMD5* md5) const { av_free(md5); }
  };
  std::unique_ptr<AVMD5, Free> state;
};

StreamInfo OutputInfo(const StreamInfo& in, Size size) {
  StreamInfo out = in;
  out.size = size;
  if (in.sampleAspect.num > 0 && in.sampleAspect.den > 0) {  // the picture keeps its shape on the screen
    av_reduce(&out.sampleAspect.num, &out.sampleAspect.den,
              static_cast<std::int64_t>(in.sampleAspect.num) * in.size.width * size.height,
              static_cast<std::int64_t>(in.sampleAspect.den) * in.size.height * size.width, 65535);
  }
  return out;
}

void WriteStats(OutputFile& file, std::int64_t frame, const Processing& processing) {
  const nlohmann::ordered_json line = {
      {"frame", frame}, {"nanoseconds", processing.Nanoseconds()}, {"kernel", processing.Kernel()}};
  file.Write(line.dump() + "\n");
}

}  // namespace

void RunFrames(const Options& options) {
  const OutputOptions& output = options.output;
  const Layout layout = LayoutOf(options.command);
  InputOptions input = options.input;
  if (WritesOneFrame(output.path) && input.frames == 0) input.frames = 1;
  FrameReader reader(input, layout);
  const StreamInfo& info = reader.Info();
  const Size size = output.size.width > 0 ? output.size : info.size;
  CheckOutputSize(output.path, size);

  const std::unique_ptr<Processing> processing = MakeProcessing(options, info.size, size);
  std::unique_ptr<FrameWriter> writer;
  if (!output.path.empty()) writer = OpenWriter(output.path, OutputInfo(info, size), layout);
  std::optional<OutputFile> stats, compare;
  if (!output.statsPath.empty()) stats.emplace(output.statsPath);
  if (!output.comparePath.empty()) compare.emplace(output.comparePath);

  FrameDigest digest;
  Picture before, after;
  Progress progress(info.frameCount);
  while (reader.Read(before)) {
    CheckInterrupted();
    processing->Run(before, after);
    if (writer) writer->Write(after);
    if (stats) WriteStats(*stats, progress.Frames(), *processing);
    if (output.md5) digest.Add(after);
    progress.FrameDone();
  }
  progress.Clear();

  if (writer) writer->Finish();
  if (stats) stats->Close();
  if (compare) {
    const FramePtr in = WrapPicture(before, info), out = WrapPicture(after, OutputInfo(info, size));
    WritePng(*compare, ComparePicture(*in, *out, processing->Kernel()));
    compare->Close();
  }
  if (output.md5) {
    const std::string line = digest.Text() + "  " + std::to_string(progress.Frames()) + " frames of " + ToString(size) +
                             (layout == Layout::kUyvy ? " uyvy422" : " nv12");
    if (output.TakesStandardOutput()) {
      std::fprintf(stderr, "%s\n", line.c_str());
    } else {
      PrintLine(line);
    }
  }
  if (writer) writer->Commit();
  if (stats) stats->Commit();
  if (compare) compare->Commit();
  if (progress.Shown()) {
    std::fprintf(stderr, "%lld frames of %s in %.2f s (%s, %s)\n", static_cast<long long>(progress.Frames()),
                 ToString(size).c_str(), progress.Seconds(), processing->Kernel().c_str(), LevelName(LevelInUse()));
  }
}

}  // namespace vidproc::tool
