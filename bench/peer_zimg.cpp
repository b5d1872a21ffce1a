// zimg: planes in its graph; packed frames are taken apart and put together row by row in its callbacks, in cache, and
// so is the chroma of NV12. Where the processor has AVX-512, it is entered with and without it.
#include <zimg.h>

#include <memory>
#include <string>

#include "contest.h"

namespace bench {
namespace {

/// What the callbacks see: planes of a few rows on zimg's side, whole frames on ours.
struct Sides {
  Format format = Format::kPacked422;
  int width = 0;
  int height = 0;
  const std::uint8_t* source = nullptr;
  std::uint8_t* destination = nullptr;
  zimg_image_buffer planes{};
  Bytes memory;

  std::uint8_t* Row(int plane, unsigned row) const {
    const auto& p = planes.plane[plane];
    return static_cast<std::uint8_t*>(p.data) + static_cast<std::ptrdiff_t>(row & p.mask) * p.stride;
  }
  std::ptrdiff_t FrameOffset(unsigned row) const {
    return static_cast<std::ptrdiff_t>(row) * (format == Format::kNv12 ? width : 2 * width);
  }
  std::ptrdiff_t ChromaOffset(unsigned row) const {
    return static_cast<std::ptrdiff_t>(width) * (height + static_cast<std::ptrdiff_t>(row / 2));
  }

  void Shape(Format frameFormat, Size size) {
    format = frameFormat;
    width = size.width;
    height = size.height;
  }
  /// Planes of the frame itself need no conversion.
  void UseWholePlanes(std::uint8_t* frame) {
    if (format == Format::kPacked422) return;
    planes.plane[0] = {frame, width, ZIMG_BUFFER_MAX};
    if (format != Format::kI420) return;
    std::uint8_t* const chroma = frame + static_cast<std::ptrdiff_t>(width) * height;
    planes.plane[1] = {chroma, width / 2, ZIMG_BUFFER_MAX};
    planes.plane[2] = {chroma + static_cast<std::ptrdiff_t>(width) * height / 4, width / 2, ZIMG_BUFFER_MAX};
  }

  void TakeRows(unsigned lines) {
    planes.version = ZIMG_API_VERSION;
    const unsigned mask = zimg_select_buffer_mask(lines);
    const auto rows = static_cast<std::size_t>(mask == ZIMG_BUFFER_MAX ? static_cast<unsigned>(height) : mask + 1);
    const std::size_t stride = (static_cast<std::size_t>(width) + 63) / 64 * 64;
    memory.resize(3 * rows * stride);
    for (std::size_t p = 0; p < 3; ++p) {
      planes.plane[p].data = memory.data() + p * rows * stride;
      planes.plane[p].stride = static_cast<std::ptrdiff_t>(stride);
      // Chroma of 4:2:0 counts its own rows; its ring may be as long as luma's.
      planes.plane[p].mask = mask;
    }
  }
};

int Unpack(void* user, unsigned row, unsigned, unsigned) {
  const Sides& s = *static_cast<Sides*>(user);
  if (s.format == Format::kPacked422) {
    UnpackRow(s.source + s.FrameOffset(row), s.width, s.Row(0, row), s.Row(1, row), s.Row(2, row));
    return 0;
  }
  SplitRow(s.source + s.ChromaOffset(row), s.width / 2, s.Row(1, row / 2), s.Row(2, row / 2));
  return 0;
}

int Pack(void* user, unsigned row, unsigned, unsigned) {
  const Sides& s = *static_cast<Sides*>(user);
  if (s.format == Format::kPacked422) {
    PackRow(s.Row(0, row), s.Row(1, row), s.Row(2, row), s.width, s.destination + s.FrameOffset(row));
    return 0;
  }
  MergeRow(s.Row(1, row / 2), s.Row(2, row / 2), s.width / 2, s.destination + s.ChromaOffset(row));
  return 0;
}

zimg_image_format Describe(Format format, Size size) {
  zimg_image_format description;
  zimg_image_format_default(&description, ZIMG_API_VERSION);
  description.width = static_cast<unsigned>(size.width);
  description.height = static_cast<unsigned>(size.height);
  description.pixel_type = ZIMG_PIXEL_BYTE;
  description.subsample_w = 1;
  description.subsample_h = format == Format::kPacked422 ? 0 : 1;
  description.color_family = ZIMG_COLOR_YUV;
  description.pixel_range = ZIMG_RANGE_LIMITED;
  return description;
}

struct Scaler {
  std::unique_ptr<zimg_filter_graph, decltype(&zimg_filter_graph_free)> graph{nullptr, zimg_filter_graph_free};
  Bytes working;
  Sides in, out;

  Scaler(const Contest& contest, zimg_resample_filter_e filter, zimg_cpu_type_e cpu) {
    in.Shape(contest.format, contest.in);
    out.Shape(contest.format, contest.out);
    const zimg_image_format source = Describe(contest.format, contest.in);
    const zimg_image_format destination = Describe(contest.format, contest.out);
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = filter;
    parameters.resample_filter_uv = filter;
    parameters.cpu_type = cpu;
    graph.reset(zimg_filter_graph_build(&source, &destination, &parameters));
    if (graph == nullptr) return;
    std::size_t bytes = 0;
    unsigned inLines = 0, outLines = 0;
    zimg_filter_graph_get_tmp_size(graph.get(), &bytes);
    zimg_filter_graph_get_input_buffering(graph.get(), &inLines);
    zimg_filter_graph_get_output_buffering(graph.get(), &outLines);
    working.resize(bytes);
    in.TakeRows(inLines);
    out.TakeRows(outLines);
  }

  void Process(const std::uint8_t* source, std::uint8_t* destination) {
    in.source = source;
    out.destination = destination;
    in.UseWholePlanes(const_cast<std::uint8_t*>(source));
    out.UseWholePlanes(destination);
    const zimg_image_buffer& from = in.planes;
    zimg_image_buffer_const readable{};
    readable.version = from.version;
    for (int p = 0; p < 3; ++p) {
      readable.plane[p] = {from.plane[p].data, from.plane[p].stride, from.plane[p].mask};
    }
    const bool isPlanar = in.format == Format::kI420;
    zimg_filter_graph_process(graph.get(), &readable, &out.planes, working.data(), isPlanar ? nullptr : Unpack, &in,
                              isPlanar ? nullptr : Pack, &out);
  }
};

void Enter(const Contest& contest, const std::string& contestant, zimg_resample_filter_e filter, zimg_cpu_type_e cpu) {
  Enter(contest, contestant, [=]() -> Run {
    const auto scaler = std::make_shared<Scaler>(contest, filter, cpu);
    if (scaler->graph == nullptr) return {};
    return [=](const std::uint8_t* source, std::uint8_t* destination) { scaler->Process(source, destination); };
  });
}

void Enter(const Contest& contest, const std::string& contestant, zimg_resample_filter_e filter) {
#if defined(__x86_64__)
  Enter(contest, contestant, filter, ZIMG_CPU_X86_AVX2);
  if (__builtin_cpu_supports("avx512bw")) Enter(contest, contestant + "-avx512", filter, ZIMG_CPU_AUTO_64B);
#else
  Enter(contest, contestant, filter, ZIMG_CPU_AUTO);
#endif
}

const bool kEntered = [] {
  for (const int soften : {10, 0}) {
    for (const Contest& contest : ScaleContests(soften)) {
      Enter(contest, "zimg-bicubic", ZIMG_RESIZE_BICUBIC);
      Enter(contest, "zimg-bilinear", ZIMG_RESIZE_BILINEAR);
    }
  }
  for (const Contest& contest : MemoryContests()) Enter(contest, "zimg-bicubic", ZIMG_RESIZE_BICUBIC);
  for (const Contest& contest : PostScaleContests()) Enter(contest, "zimg-lanczos", ZIMG_RESIZE_LANCZOS);
  for (const Contest& contest : AdaptiveContests("adaptive")) Enter(contest, "zimg-bicubic", ZIMG_RESIZE_BICUBIC);
  for (const char* work : {"adaptive16", "smoothing"}) {
    for (const Contest& contest : AdaptiveContests(work)) Enter(contest, "zimg-lanczos", ZIMG_RESIZE_LANCZOS);
  }
  for (const Contest& contest : {Nv12Contest(), AutomaticNv12Contest()}) {
    Enter(contest, "zimg-bicubic", ZIMG_RESIZE_BICUBIC);
  }
  for (const Contest& contest : AutomaticContests(8)) Enter(contest, "zimg-bicubic", ZIMG_RESIZE_BICUBIC);
  for (const Contest& contest : AutomaticContests(16)) Enter(contest, "zimg-lanczos", ZIMG_RESIZE_LANCZOS);
  Enter(PostAutomaticContest(), "zimg-lanczos", ZIMG_RESIZE_LANCZOS);
  return true;
}();

}  // namespace
}  // namespace bench
