// pre, post and object: frames are read, processed and written, each by a thread of its own.
#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "commands.h"
#include "compare_picture.h"
#include "errors.h"
#include "file_io.h"
#include "frame_queue.h"
#include "frame_reader.h"
#include "frame_shape.h"
#include "frame_writer.h"
#include "processing.h"
#include "progress.h"

namespace vidproc::tool {
namespace {

/// A frame, or a packet of sound that belongs before the next one.
using Item = std::variant<FramePtr, PacketPtr>;
using ItemQueue = BoundedQueue<Item>;
using Writers = std::vector<std::unique_ptr<FrameWriter>>;  ///< the first one takes the sound
constexpr std::size_t kQueuedItems = 8;

void ReadInto(ItemQueue& queue, FrameReader& reader) {
  try {
    bool goesOn = true;
    while (goesOn) {
      FramePtr frame = reader.Read();
      for (PacketPtr& packet : reader.TakeSound()) goesOn = queue.Push(std::move(packet)) && goesOn;
      goesOn = goesOn && frame && queue.Push(std::move(frame));
    }
    queue.End();
  } catch (...) {
    queue.End(std::current_exception());
  }
}

/// @return what has gone wrong, here or before
std::exception_ptr WriteFrom(ItemQueue& queue, const Writers& writers) {
  try {
    while (std::optional<Item> item = queue.Pop()) {
      if (auto* packet = std::get_if<PacketPtr>(&*item)) {
        if (!writers.empty()) writers.front()->WriteSound(**packet);
        continue;
      }
      for (const auto& writer : writers) writer->Write(*std::get<FramePtr>(*item));
    }
    for (const auto& writer : writers) writer->Finish();
    return nullptr;
  } catch (...) {
    queue.Stop();
    return std::current_exception();
  }
}

/// Runs until the input ends or something fails anywhere; then all have ended, and the failure is thrown.
template <typename Process>
void RunStages(FrameReader& reader, const Writers& writers, const Process& process) {
  ItemQueue decoded(kQueuedItems), processed(kQueuedItems);
  std::exception_ptr failure;
  std::thread reading([&] { ReadInto(decoded, reader); });
  std::thread writing([&] {
    failure = WriteFrom(processed, writers);
    decoded.Stop();  // or who processes would wait for input that nobody needs
  });
  try {
    while (std::optional<Item> item = decoded.Pop()) {
      if (auto* frame = std::get_if<FramePtr>(&*item)) *frame = process(std::move(*frame));
      if (!processed.Push(std::move(*item))) break;
    }
    processed.End();
  } catch (...) {
    processed.End(std::current_exception());
  }
  writing.join();
  decoded.Stop();
  reader.GiveUp();
  reading.join();
  if (failure) std::rethrow_exception(failure);
}

std::string StatsLine(std::int64_t frame, double seconds, Processing& processing) {
  nlohmann::ordered_json line = {
      {"frame", frame}, {"seconds", std::round(seconds * 1e6) / 1e6}, {"nanoseconds", processing.Nanoseconds()}};
  if (const std::optional<int> noise = processing.Noise()) line["noise"] = *noise / 100.0;
  return line.dump() + "\n";
}

std::string NameOf(Command command) {
  return command == Command::kPre ? "pre" : command == Command::kPost ? "post" : "object";
}

Writers OpenWriters(const OutputOptions& options, const std::optional<OutputFormat>& format, const StreamInfo& made) {
  Writers writers;
  if (format) writers.push_back(std::make_unique<FrameWriter>(options, *format, made));
  if (!options.md5Path.empty()) {
    OutputOptions md5;
    md5.path = options.md5Path;
    md5.muxer = "framemd5";
    md5.format = made.format;
    writers.push_back(std::make_unique<FrameWriter>(md5, ChooseFormat(md5), made));
  }
  return writers;
}

/// The library's format that what is written is nearest to, so that frames are made in it at once.
AVPixelFormat FormatToMake(const std::optional<OutputFormat>& format, const StreamInfo& input) {
  const AVPixelFormat wanted = format ? CodecFormat(*format, input.format, input.colour.range) : input.format;
  if (wanted == AV_PIX_FMT_YUVJ420P) return AV_PIX_FMT_YUV420P;
  if (wanted == AV_PIX_FMT_YUVJ422P) return AV_PIX_FMT_YUV422P;
  return IsLibraryFormat(wanted) ? wanted : input.format;
}

std::span<const AVPixelFormat> AcceptedFormats(Command command) {
  static constexpr AVPixelFormat kUyvy[] = {AV_PIX_FMT_UYVY422}, kNv12[] = {AV_PIX_FMT_NV12};
  if (!IsObject(command)) return kLibraryFormats;
  if (command == Command::kObjectNv12) return kNv12;
  return kUyvy;
}

}  // namespace

void RunFrames(const Options& options) {
  const OutputOptions& output = options.output;
  std::optional<OutputFormat> format;
  if (!output.path.empty()) format = ChooseFormat(output);
  InputOptions input = options.input;
  if (format && format->isOnePicture && input.frames == 0) input.frames = 1;
  FrameReader reader(input, AcceptedFormats(options.command));

  const bool isObject = IsObject(options.command);
  const FrameShape shape = ShapeFrames(reader.Info(), output.size, isObject ? Fit::kStretch : output.fit);
  StreamInfo made = reader.Info();
  made.size = shape.output;
  made.sampleAspect = shape.sampleAspect;
  if (!isObject) made.format = FormatToMake(format, reader.Info());
  const std::unique_ptr<Processing> processing = isObject ? MakeObjectProcessing(options, reader.Info(), shape)
                                                          : MakeProcessing(options, reader.Info(), shape, made.format);
  const Writers writers = OpenWriters(output, format, made);
  std::optional<OutputFile> stats, compare;
  if (!output.statsPath.empty()) stats.emplace(output.statsPath);
  if (!output.comparePath.empty()) compare.emplace(output.comparePath);

  FramePtr before, after;
  Progress progress(made.frameCount, options.quiet);
  RunStages(reader, writers, [&](FramePtr frame) {
    FramePtr result = processing->Run(*frame);
    const double seconds = static_cast<double>(frame->pts) * av_q2d(made.timeBase);
    if (stats) stats->Write(StatsLine(progress.Frames(), seconds, *processing));
    if (compare) {
      before = std::move(frame);
      after.reset(OrBadAlloc(av_frame_clone(result.get())));
    }
    progress.FrameDone();
    return result;
  });
  progress.Clear();
  if (compare) compare->Write(drawing::Png(ComparePicture(*before, *after, NameOf(options.command))));
  for (std::optional<OutputFile>* file : {&stats, &compare}) {
    if (*file) (*file)->Close();
  }
  for (const auto& writer : writers) writer->Commit();
  for (std::optional<OutputFile>* file : {&stats, &compare}) {
    if (*file) (*file)->Commit();
  }
  progress.Summarise(ToString(made.size));
}

}  // namespace vidproc::tool
