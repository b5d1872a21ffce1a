// Pre-processing, post-processing and 4:2:0 scaling of whole pictures; see processing.h.
#include "processing.h"

#include <chrono>
#include <cstdio>
#include <cstring>

#include "processor_handle.h"

namespace vidproc::tool {
namespace {

template <typename Work>
std::int64_t Timed(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start).count();
}

void Note(const char* text) { std::fprintf(stderr, "vidproc: note: %s\n", text); }

/// The library's frames are not const; only deblocking writes to its source, and gets a copy of its own.
std::uint8_t* Bytes(const Picture& picture) { return const_cast<std::uint8_t*>(picture.bytes.data()); }

/// Products of a sample and a coefficient live in 16 bits: 255 x 129 no longer fits.
void WarnOfWraps(const ProcessorHandle& handle) {
  for (int phase = 0; phase < 16; ++phase) {
    for (int tap = 0; tap < 16; ++tap) {
      if (handle->horizontalFilterLanes[phase][tap][0] > 128 || handle->verticalFilterLanes[phase][tap][0] > 128) {
        Note("this --enhance makes coefficients above 128, which wrap on bright samples; add --soften or lower it");
        return;
      }
    }
  }
}

class PreProcessing final : public Processing {
 public:
  PreProcessing(const Options& options, Size from, Size to)
      : pre(options.pre), seed(options.input.seed), to(to), handle(PreProcCleanup) {
    const bool temporalOnly = from == to && options.scaler.soften == 0 && !pre.luma;
    kernel = pre.luma              ? "plain_scaler_luma_shift"
             : temporalOnly        ? "temporal_filter"
             : pre.adaptive == 0   ? "plain_scaler"
             : pre.taps16          ? "adaptive_16tap"
             : pre.motionSmoothing ? "motion_smoothing"
                                   : "adaptive_scaler";
    if (temporalOnly) {
      if (pre.adaptive != 0 || options.scaler.enhance != 0 || options.scaler.dither != 0) {
        Note(
            "equal sizes run the temporal filter alone; --adaptive, --enhance and --dither need another --size or "
            "--soften");
      }
      padded = {from.width, (from.height + 15) / 16 * 16};
    } else if (pre.temporal && pre.adaptive == 0) {
      Note("--temporal has no effect here: it needs --adaptive or equal sizes without --soften");
    }
    SetUp(PreProcInit, handle, temporalOnly ? padded : from, temporalOnly ? padded : to, options.scaler);
    if (pre.taps16) UseLongTaps(handle, options.scaler.enhance);
    if (!temporalOnly) WarnOfWraps(handle);
  }

  void Run(const Picture& input, Picture& output) override {
    output.Allocate(Layout::kUyvy, to);
    output.pts = input.pts;
    handle->ditherSeed = static_cast<std::int32_t>((seed + frames++) & 255);
    if (padded.height > to.height) {
      RunPadded(input, output);
    } else {
      nanoseconds = Timed([&] { Execute(Bytes(input), output.bytes.data()); });
    }
  }

 private:
  void Execute(std::uint8_t* source, std::uint8_t* destination) {
    if (pre.luma) {
      handle->InitLuminanceShiftTables(static_cast<short>(pre.luma->gain), static_cast<short>(pre.luma->offset));
      handle->srcFrame = source;
      handle->dstFrame = destination;
      handle->PreProcExecute_SSE2();
      return;
    }
    const Temporal temporal = pre.temporal.value_or(Temporal{});
    PreProcExecute(handle.Get(), source, destination, static_cast<unsigned char>(pre.adaptive), pre.taps16,
                   pre.motionSmoothing, static_cast<unsigned char>(temporal.strength),
                   static_cast<unsigned char>(temporal.shift), 64, 0);
  }

  /// The temporal filter works in whole groups of 16 rows; the last row is repeated to fill the last one.
  void RunPadded(const Picture& input, Picture& output) {
    tall.Allocate(Layout::kUyvy, padded);
    tallOutput.Allocate(Layout::kUyvy, padded);
    std::memcpy(tall.bytes.data(), input.bytes.data(), input.bytes.size());
    const std::size_t row = input.RowBytes();
    for (std::size_t y = input.Height(); y < tall.Height(); ++y) {
      std::memcpy(&tall.bytes[y * row], &input.bytes[input.bytes.size() - row], row);
    }
    nanoseconds = Timed([&] { Execute(tall.bytes.data(), tallOutput.bytes.data()); });
    std::memcpy(output.bytes.data(), tallOutput.bytes.data(), output.bytes.size());
  }

  PreOptions pre;
  std::int64_t seed;
  Size to;
  Size padded;
  ProcessorHandle handle;
  Picture tall;
  Picture tallOutput;
  std::int64_t frames = 0;
};

class PostProcessing final : public Processing {
 public:
  PostProcessing(const Options& options, Size from, Size to)
      : deblock(static_cast<unsigned char>(options.deblock)),
        seed(options.input.seed),
        from(from),
        to(to),
        deblocker(PostProcCleanup),
        scaler(PostProcCleanup) {
    const bool copies = from == to && options.scaler.enhance == 0 && options.scaler.soften == 0;
    kernel = std::string(deblock > 0 ? "deblock8x8+" : "") + (copies ? "post_copy" : "post_scaler");
    SetUp(PostProcInit, scaler, from, to, options.scaler);
    if (!copies) WarnOfWraps(scaler);
    if (deblock == 0) return;
    // Deblocking covers the whole picture only where it does not scale, so it has a processor of its own size.
    SetUp(PostProcInit, deblocker, from, from, {});
    deblocker->SetDeblockTestPattern(0);
  }

  void Run(const Picture& input, Picture& output) override {
    output.Allocate(Layout::kUyvy, to);
    output.pts = input.pts;
    scaler->ditherSeed = static_cast<std::int32_t>((seed + frames++) & 255);
    if (deblock == 0) {
      nanoseconds = Timed([&] { PostProcExecute(scaler.Get(), Bytes(input), output.bytes.data(), 0, 64, 0); });
      return;
    }
    work = input;
    deblocked.Allocate(Layout::kUyvy, from);
    nanoseconds = Timed([&] {
      PostProcExecute(deblocker.Get(), work.bytes.data(), deblocked.bytes.data(), deblock, 64, 0);
      PostProcExecute(scaler.Get(), deblocked.bytes.data(), output.bytes.data(), 0, 64, 0);
    });
  }

 private:
  unsigned char deblock;
  std::int64_t seed;
  Size from;
  Size to;
  ProcessorHandle deblocker;
  ProcessorHandle scaler;
  Picture work;
  Picture deblocked;
  std::int64_t frames = 0;
};

class Nv12Processing final : public Processing {
 public:
  Nv12Processing(Size from, Size to) : from(from), to(to), handle(VidProc420InterleavedCleanup) {
    kernel = "plain_scaler_420";
    if (!VidProc420InterleavedInit(handle.Address(), Unsigned(from.width), Unsigned(from.height), Unsigned(to.width),
                                   Unsigned(to.height)) ||
        handle.Get() == nullptr) {
      throw ToolError(kFailure, "the library refused to scale from " + ToString(from) + " to " + ToString(to));
    }
  }

  void Run(const Picture& input, Picture& output) override {
    output.Allocate(Layout::kNv12, to);
    output.pts = input.pts;
    nanoseconds = Timed([&] {
      VidProc420InterleavedExecute(handle.Get(), Bytes(input), Bytes(input) + input.LumaBytes(), output.bytes.data(),
                                   output.Chroma(), Unsigned(from.width), Unsigned(from.height), Unsigned(from.width),
                                   Unsigned(from.width), Unsigned(to.width), Unsigned(to.height), Unsigned(to.width),
                                   Unsigned(to.width), 64, 0);
    });
  }

 private:
  static unsigned int Unsigned(int value) { return static_cast<unsigned int>(value); }

  Size from;
  Size to;
  ProcessorHandle handle;
};

}  // namespace

std::unique_ptr<Processing> MakeProcessing(const Options& options, Size from, Size to) {
  switch (options.command) {
    case Command::kPre:
      return std::make_unique<PreProcessing>(options, from, to);
    case Command::kPost:
      return std::make_unique<PostProcessing>(options, from, to);
    default:
      return std::make_unique<Nv12Processing>(from, to);
  }
}

}  // namespace vidproc::tool
