#include "api/frame_checks.h"

#include <algorithm>

namespace vidproc::api {
namespace {

std::size_t Magnitude(std::ptrdiff_t stride) {
  return stride < 0 ? std::size_t{0} - static_cast<std::size_t>(stride) : static_cast<std::size_t>(stride);
}

vidproc_status CheckIdentity(const FrameView& f, const vidproc_frame_info& configured, ErrorText& error) {
  const struct {
    const char* field;
    std::int32_t value, expected;
  } fields[] = {{"format", f.format, configured.format},
                {"width", f.width, configured.width},
                {"height", f.height, configured.height}};
  for (const auto& field : fields) {
    if (field.value == field.expected) continue;
    return error.Set(VIDPROC_ERROR_FRAME_MISMATCH, "%s.%s is %d, configured is %d", f.name, field.field, field.value,
                     field.expected);
  }
  return VIDPROC_OK;
}

vidproc_status CheckPlane(const FrameView& f, int p, const PlaneLayout& layout, ErrorText& error) {
  if (f.plane[p] == nullptr) {
    return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "%s.plane[%d] is null, allowed is memory of the frame", f.name, p);
  }
  const std::size_t stride = Magnitude(f.stride[p]);
  if (stride < layout.rowBytes) {
    return error.Set(VIDPROC_ERROR_BUFFER_TOO_SMALL, "%s.stride[%d] is %td, allowed %zu or more, or %td or less",
                     f.name, p, f.stride[p], layout.rowBytes, -static_cast<std::ptrdiff_t>(layout.rowBytes));
  }
  const std::size_t rowBytes = layout.TouchedRowBytes(stride), steps = layout.rows - 1;
  const std::size_t longest = steps == 0 ? kPlaneBytesLimit : (kPlaneBytesLimit - 1 - rowBytes) / steps;
  if (stride > longest) {
    return error.Set(VIDPROC_ERROR_INVALID_ARGUMENT, "%s.stride[%d] is %td, allowed up to %zu bytes between rows",
                     f.name, p, f.stride[p], longest);
  }
  const std::size_t needed = steps * stride + rowBytes;
  if (f.bytes[p] < needed) {
    return error.Set(VIDPROC_ERROR_BUFFER_TOO_SMALL, "%s.bytes[%d] is %zu, allowed %zu or more", f.name, p, f.bytes[p],
                     needed);
  }
  return VIDPROC_OK;
}

/// The bytes of a plane that are touched: `rowBytes` bytes every `stride`, from `low` up to `end`.
struct Extent {
  std::uintptr_t low;
  std::uintptr_t end;
  std::size_t stride;
  std::size_t rowBytes;
};

Extent ExtentOf(const FrameView& f, int p, const PlaneLayout& layout) {
  const std::size_t stride = Magnitude(f.stride[p]), rowBytes = layout.TouchedRowBytes(stride);
  const std::size_t reach = (layout.rows - 1) * stride;
  const auto top = reinterpret_cast<std::uintptr_t>(f.plane[p]);
  const std::uintptr_t low = f.stride[p] < 0 ? top - reach : top;
  return {low, low + reach + rowBytes, stride, rowBytes};
}

/// Planes with equal strides may lie in each other's padding, as halves of one picture do.
bool ShareBytes(const Extent& a, const Extent& b) {
  if (a.end <= b.low || b.end <= a.low) return false;
  if (a.stride != b.stride) return true;
  const std::size_t offset = a.low <= b.low ? (b.low - a.low) % a.stride : (a.stride - (a.low - b.low) % a.stride);
  return offset < a.rowBytes || offset + b.rowBytes > a.stride;
}

bool IsSameFrame(const FrameView& a, const FrameView& b, int planes) {
  return a.format == b.format && a.width == b.width && a.height == b.height &&
         std::equal(a.plane, a.plane + planes, b.plane) && std::equal(a.stride, a.stride + planes, b.stride);
}

}  // namespace

vidproc_status CheckFrame(const FrameView& frame, const vidproc_frame_info& configured, ErrorText& error) noexcept {
  vidproc_status status = CheckIdentity(frame, configured, error);
  const FrameLayout layout = LayoutOf(configured);
  for (int p = 0; p < layout.planes && status == VIDPROC_OK; ++p) status = CheckPlane(frame, p, layout.plane[p], error);
  return status;
}

vidproc_status CheckOverlap(const FrameView& input, const vidproc_frame_info& inputInfo, const FrameView& output,
                            const vidproc_frame_info& outputInfo, ErrorText& error) noexcept {
  const FrameLayout in = LayoutOf(inputInfo), out = LayoutOf(outputInfo);
  const bool isInPlace = IsSameFrame(input, output, out.planes);
  for (int o = 0; o < out.planes; ++o) {
    const Extent written = ExtentOf(output, o, out.plane[o]);
    for (int other = o + 1; other < out.planes; ++other) {
      if (!ShareBytes(written, ExtentOf(output, other, out.plane[other]))) continue;
      return error.Set(VIDPROC_ERROR_OVERLAP, "output.plane[%d] shares bytes with output.plane[%d], allowed are none",
                       o, other);
    }
    for (int i = 0; i < in.planes && !isInPlace; ++i) {
      if (!ShareBytes(written, ExtentOf(input, i, in.plane[i]))) continue;
      return error.Set(VIDPROC_ERROR_OVERLAP,
                       "output.plane[%d] shares bytes with input.plane[%d], allowed are none or the very same frame", o,
                       i);
    }
  }
  return VIDPROC_OK;
}

}  // namespace vidproc::api
