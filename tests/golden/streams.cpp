#include "golden/streams.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

#include "fuzz/checked_frames.h"
#include "support/api_frames.h"
#include "support/fast_noise.h"

namespace golden {
namespace {

using testing_support::Flush;
using testing_support::Geometry;
using testing_support::GuardedMemory;
using testing_support::IsOfWholePages;
using testing_support::Processor;

constexpr int kFrames = 3, kWatchedFrames = 90;

unsigned Side(int length) { return static_cast<unsigned>(length); }

/// A packed frame of the object; nothing behind the last row's pixels may be touched. A few kernels use what lies
/// between rows: that counts as theirs where it is there.
Frame PackedFrame(int width, int height, int padding, Flush flush, std::uint8_t*& start) {
  const auto rowBytes = static_cast<std::size_t>(2 * width), stride = rowBytes + static_cast<std::size_t>(padding);
  const Rows rows{static_cast<std::size_t>(height), rowBytes, stride};
  Frame frame(stride * rows.count, static_cast<int>(stride));
  const bool isOneRow = !IsOfWholePages(stride);
  start =
      frame.AddPlane(isOneRow ? Rows{1, rows.Bytes(), stride} : rows, flush, 0, static_cast<std::ptrdiff_t>(stride));
  return frame;
}

/// Set-ups keep a lack of memory for the object or its noise to themselves.
void RequireWhole(const Processor& processor) {
  if (processor == nullptr || processor->ditherTable == nullptr) throw std::bad_alloc();
}

/// Calls a set-up of the exported functions for a new handle; one that it leaves half made is owned too.
template <typename Init>
void Renew(Processor& processor, const Init& init) {
  {
    struct Adoption {
      Processor& owner;
      void* handle = nullptr;
      ~Adoption() { owner.reset(static_cast<VideoProcessor*>(handle)); }
    } adoption{processor};
    init(&adoption.handle);
  }
  RequireWhole(processor);
}

template <typename SetUp, typename Run>
Stream StartObject(const Geometry& g, Flush flush, const SetUp& setUp, const Run& run) {
  std::uint8_t *source = nullptr, *destination = nullptr;
  Stream stream{PackedFrame(g.inWidth, g.inHeight, g.inPadding, flush, source),
                PackedFrame(g.outWidth, g.outHeight, g.outPadding, flush, destination),
                {},
                {}};
  stream.changesInput = true;
  const auto processor = std::make_shared<Processor>();
  stream.setUp = [=] { setUp(*processor); };
  stream.run = [=] { run(**processor, source, destination); };
  return stream;
}

Frame PlanarFrame(int width, int height, int padding, Flush flush, std::uint8_t* (&start)[2]) {
  const auto rowBytes = static_cast<std::size_t>(width), stride = rowBytes + static_cast<std::size_t>(padding);
  const auto rows = static_cast<std::size_t>(height), chromaRows = (rows + 1) / 2;
  const auto step = static_cast<std::ptrdiff_t>(stride);
  Frame frame(stride * (rows + chromaRows), static_cast<int>(stride));
  start[0] = frame.AddPlane({rows, rowBytes, stride}, flush, 0, step);
  // An odd width's last Cr is touched where the stride has room for it.
  start[1] = frame.AddPlane({chromaRows, std::min((rowBytes + 1) / 2 * 2, stride), stride}, flush, stride * rows, step);
  return frame;
}

/// Planes apart; the block holds them tightly behind one another.
Frame CheckedFrame(const vidproc_frame_info& info, const Placement& placement, vidproc_output& view) {
  Frame frame(vidproc::FrameBytes(info),
              testing_support::IsPacked(info.format) ? (info.width + 1) / 2 * 4 : info.width);
  view = {info.format, info.width, info.height, {}, {}, {}};
  const vidproc::api::FrameLayout layout = vidproc::api::LayoutOf(info);
  std::size_t offset = 0;
  for (int p = 0; p < layout.planes; ++p) {
    const vidproc::api::PlaneLayout& plane = layout.plane[p];
    const std::size_t stride = placement.padding == kWholePages
                                   ? testing_support::StrideOfPages(plane.wholeRowBytes)
                                   : plane.rowBytes + static_cast<std::size_t>(placement.padding);
    const Rows rows{plane.rows, plane.TouchedRowBytes(stride), stride};
    const std::size_t toLast = placement.bottomUp ? plane.rows - 1 : 0;
    const std::ptrdiff_t sign = placement.bottomUp ? -1 : 1;
    std::uint8_t* const start = frame.AddPlane(rows, placement.flush, offset + toLast * plane.wholeRowBytes,
                                               sign * static_cast<std::ptrdiff_t>(plane.wholeRowBytes));
    view.bytes[p] = rows.Bytes();
    view.plane[p] = start + toLast * stride;
    view.stride[p] = sign * static_cast<std::ptrdiff_t>(stride);
    offset += plane.rows * plane.wholeRowBytes;
  }
  return frame;
}

template <typename Handle, typename Options>
void ConfigureHandle(std::optional<Handle>& handle, const Options& options) {
  if (!handle) handle.emplace();
  handle->Configure(options);
}

template <typename Handle, typename Options>
Stream StartProcessor(const Options& options, const Placement& placement) {
  vidproc_output source = {}, destination = {};
  Stream stream{
      CheckedFrame(options.input, placement, source), CheckedFrame(options.output, placement, destination), {}, {}};
  const auto handle = std::make_shared<std::optional<Handle>>();
  stream.setUp = [=] { ConfigureHandle(*handle, options); };
  stream.run = [=, input = fuzzing::AsInput(source), output = placement.inPlace ? source : destination] {
    (*handle)->Process(input, output);
  };
  return stream;
}

}  // namespace

std::uint8_t* Frame::AddPlane(const Rows& rows, Flush flush, std::size_t offset, std::ptrdiff_t step) {
  testing_support::Random random(1);
  planes.push_back(std::make_unique<GuardedMemory>(rows.Bytes(), flush, random, rows.stride));
  GuardedMemory& plane = *planes.back();
  plane.Load();
  for (std::size_t y = 0; y < rows.count; ++y, offset += static_cast<std::size_t>(step)) {
    const std::size_t row = y * rows.stride;
    pieces.push_back({plane.Live() + row, plane.Expected() + row, offset, rows.bytes});
    std::fill_n(plane.Live() + row, rows.bytes, std::uint8_t{0});
  }
  return plane.Live();
}

void Frame::Paint(int n) {
  testing_support::FastNoise noise(static_cast<std::uint32_t>(n) * 977 + 1);
  for (std::size_t i = 0; i < block.size(); ++i) {
    const int x = static_cast<int>(i) % rowBytes, y = static_cast<int>(i) / rowBytes;
    const std::uint32_t drawn = noise.Bits();
    const int slope = std::abs((3 * x + 5 * y + 4 * n) % 256 - 128), step = (x / 11 + y / 7) % 3 * 35;
    const int sample = slope + step + static_cast<int>(drawn >> 29);
    block[i] = static_cast<std::uint8_t>(drawn % 101 == 0 ? 255 * (y % 2) : sample);
  }
}

void Frame::Load() const {
  for (const Piece& piece : pieces) std::copy_n(block.data() + piece.offset, piece.bytes, piece.memory);
}

void Frame::Store() {
  for (const Piece& piece : pieces) {
    std::copy_n(piece.memory, piece.bytes, block.data() + piece.offset);
    std::copy_n(piece.memory, piece.bytes, piece.expected);
  }
  for (const auto& plane : planes) EXPECT_EQ(plane->FirstDifference(0, static_cast<std::size_t>(rowBytes)), "");
}

void Stream::Paint(int n) {
  in.Paint(watchesExposure ? n % 2 : n);
  if (watchesExposure) {
    const int divisor = n % kWatchedFrames < kWatchedFrames / 2 ? 2 : 4;
    for (std::uint8_t& byte : in.block) byte = static_cast<std::uint8_t>(byte / divisor);
  }
  in.Load();
}

void Stream::Process() {
  if (!isSetUp) setUp();
  isSetUp = true;
  run();
}

void Stream::AddTo(testing_support::Md5& sum) {
  if (changesInput) {
    in.Store();
    sum.Add(in.block.data(), in.block.size());
  }
  out.Store();
  sum.Add(out.block.data(), out.block.size());
}

std::string Stream::Sum() {
  testing_support::Md5 sum;
  for (int n = 0; n < (watchesExposure ? kWatchedFrames : kFrames); ++n) {
    Paint(n);
    Process();
    AddTo(sum);
  }
  return sum.Sum();
}

Stream StartKernel(const testing_support::Kernel& kernel, const Geometry& g, const Settings& s, Flush flush) {
  const bool isPost = kernel.family == testing_support::Family::kPost;
  testing_support::Configuration configuration{g, s.softening, s.strength};
  // The strength chooses the window too, so that every window is met.
  configuration.windowKind = s.strength % 2 == 0 ? 2 : isPost ? 0 : 1;
  configuration.use16Taps = kernel.horizontalTaps == 16;
  const auto setUp = [=](Processor& p) {
    if (p == nullptr) p.reset(new VideoProcessor(!isPost, 0));
    testing_support::SetUpProcessor(*p, configuration);
    RequireWhole(p);
    p->InitLuminanceShiftTables(s.gain, s.offset);
    p->SetUseSpatialMotionSmoothing(kernel.motionGate);
    p->SetTemporalFilter(s.temporalStrength, s.temporalShift);
    p->SetAdaptive(s.adaptive);
    p->InitDeblocker(s.deblock);
    p->SetDeblockTestPattern(0);
    p->ditherLevel = s.dither;
    p->ditherSeed = 77;
  };
  return StartObject(g, flush, setUp, [run = kernel.run](VideoProcessor& p, auto* source, auto* destination) {
    p.srcFrame = source;
    p.dstFrame = destination;
    (p.*run)();
  });
}

Stream StartExported(Use use, const Geometry& g, const Settings& s, Flush flush) {
  const auto setUp = [=](Processor& p) {
    Renew(p, [=](void** handle) {
      (use == Use::kPost ? PostProcInit : PreProcInit)(
          handle, Side(g.inWidth), Side(g.inHeight), Side(2 * g.inWidth + g.inPadding), Side(g.outWidth),
          Side(g.outHeight), Side(2 * g.outWidth + g.outPadding), s.strength, s.dither, s.softening);
    });
    p->ditherSeed = 200;
    p->cpuLevel = 1;  // the same routes on a processor without SSE4.1
  };
  return StartObject(g, flush, setUp, [=](VideoProcessor& processor, auto* source, auto* destination) {
    if (use == Use::kPost) {
      PostProcExecute(&processor, source, destination, s.deblock, s.gain, s.offset);
    } else {
      PreProcExecute(&processor, source, destination, s.adaptive, use == Use::kPre16Taps,
                     use == Use::kPreMotionSmoothing, s.temporalStrength, s.temporalShift, s.gain, s.offset);
    }
  });
}

Stream StartPlanes(const Geometry& g, Flush flush) {
  std::uint8_t *source[2] = {}, *destination[2] = {};
  Stream stream{PlanarFrame(g.inWidth, g.inHeight, g.inPadding, flush, source),
                PlanarFrame(g.outWidth, g.outHeight, g.outPadding, flush, destination),
                {},
                {}};
  const auto processor = std::make_shared<Processor>();
  stream.setUp = [=] {
    Renew(*processor, [&](void** handle) {
      VidProc420InterleavedInit(handle, Side(g.inWidth), Side(g.inHeight), Side(g.outWidth), Side(g.outHeight));
    });
  };
  stream.run = [=, luma = source[0], chroma = source[1], outLuma = destination[0], outChroma = destination[1]] {
    const unsigned inStride = Side(g.inWidth + g.inPadding), outStride = Side(g.outWidth + g.outPadding);
    VidProc420InterleavedExecute(processor->get(), luma, chroma, outLuma, outChroma, Side(g.inWidth), Side(g.inHeight),
                                 inStride, inStride, Side(g.outWidth), Side(g.outHeight), outStride, outStride, 64, 0);
  };
  return stream;
}

Stream StartChecked(const vidproc::PreOptions& options, const Placement& placement) {
  return StartProcessor<vidproc::Pre>(options, placement);
}

Stream StartChecked(const vidproc::PostOptions& options, const Placement& placement) {
  return StartProcessor<vidproc::Post>(options, placement);
}

Stream StartChecked(const vidproc::ExposureOptions& options, const Placement& placement) {
  vidproc_output source = {};
  Frame in = CheckedFrame(options.input, placement, source), event(sizeof(std::int64_t), 1);
  std::uint8_t* const lowByte = event.AddPlane({1, 1, 1}, Flush::kEnd, 0, 1);
  Stream stream{std::move(in), std::move(event), {}, {}};
  stream.watchesExposure = true;
  const auto watcher = std::make_shared<std::optional<vidproc::Exposure>>();
  stream.setUp = [=] { ConfigureHandle(*watcher, options); };
  stream.run = [=, input = fuzzing::AsInput(source)] {
    *lowByte = static_cast<std::uint8_t>((*watcher)->Process(input));
  };
  return stream;
}

}  // namespace golden
