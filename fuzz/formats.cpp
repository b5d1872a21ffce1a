// The same picture in two layouts: a stream from any format to any format, with any strides and in place, gives the
// samples of the stream of the tight frames that hold the same samples, packed for 4:2:2 and in two planes for 4:2:0.
#include "checked_frames.h"
#include "targets.h"

namespace fuzzing {
namespace {

/// Calls take(sample of a, sample of b) for every sample of two frames of one size and chroma sampling.
template <typename Take>
void ForEachSample(const vidproc_output& a, const vidproc_output& b, const Take& take) {
  for (int c = 0; c < 3; ++c) {
    const Samples of = ComponentOf(a, c), other = ComponentOf(b, c);
    for (int y = 0; y < of.height; ++y) {
      for (int x = 0; x < of.width; ++x) take(of.At(x, y), other.At(x, y));
    }
  }
}

vidproc_frame_info Canonical(vidproc_frame_info info) {
  info.format = testing_support::HalvesChromaRows(info.format) ? VIDPROC_FORMAT_NV12 : VIDPROC_FORMAT_UYVY;
  return info;
}

PlacedFrame TightFrame(const vidproc_frame_info& info) {
  const vidproc::api::FrameLayout layout = vidproc::api::LayoutOf(info);
  std::ptrdiff_t strides[3] = {};
  for (int p = 0; p < layout.planes; ++p) strides[p] = static_cast<std::ptrdiff_t>(layout.plane[p].wholeRowBytes);
  return {info, strides, kMostFrameBytes};
}

template <typename Handle>
bool TakesOptions(Handle& handle, const auto& options) {
  try {
    handle.Configure(options);
    return true;
  } catch (const vidproc::Error&) {
    return false;
  }
}

template <typename Handle, typename Options>
void Compare(Input& input) {
  const auto drawn = DrawOptions<Options>(input);
  Options canonical = drawn;
  canonical.input = Canonical(drawn.input);
  canonical.output = Canonical(drawn.output);
  Handle drawnHandle, canonicalHandle;
  const bool isTaken = TakesOptions(drawnHandle, drawn);
  Require(TakesOptions(canonicalHandle, canonical) == isTaken, "settings do not depend on the format");
  if (!isTaken) return;
  const bool isInPlace = std::memcmp(&drawn.input, &drawn.output, sizeof(drawn.input)) == 0 && input.OneIn(2);
  std::ptrdiff_t inStrides[3] = {}, outStrides[3] = {};
  DrawStrides(drawn.input, input, inStrides);
  DrawStrides(drawn.output, input, outStrides);
  const PlacedFrame in(drawn.input, inStrides, kMostFrameBytes), apart(drawn.output, outStrides, kMostFrameBytes);
  const PlacedFrame& out = isInPlace ? in : apart;
  PlacedFrame canonicalIn = TightFrame(canonical.input);
  const PlacedFrame canonicalOut = TightFrame(canonical.output);
  for (int frame = 0; frame < 3; ++frame) {
    canonicalIn.Fill(input);
    ForEachSample(in.view, canonicalIn.view, [](std::uint8_t& to, std::uint8_t from) { to = from; });
    drawnHandle.Process(AsInput(in.view), out.view);
    canonicalHandle.Process(AsInput(canonicalIn.view), canonicalOut.view);
    ForEachSample(out.view, canonicalOut.view, [](std::uint8_t sample, std::uint8_t expected) {
      Require(sample == expected, "the same samples in every format");
    });
  }
}

}  // namespace

void FuzzFormats(Input input) {
  input.OneIn(2) ? Compare<vidproc::Pre, vidproc_pre_options>(input)
                 : Compare<vidproc::Post, vidproc_post_options>(input);
}

}  // namespace fuzzing
