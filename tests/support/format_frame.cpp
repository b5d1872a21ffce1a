#include "support/format_frame.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace testing_support {
namespace {

using vidproc::FrameShape;
using vidproc::PixelFormat;

template <class Visit>
void ForEachSample(const FrameShape& shape, const Visit& visit) {
  for (int c = 0; c < 3; ++c) {
    const ComponentSize size = SizeOf(shape, c);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) visit(c, x, y, static_cast<std::size_t>(y * size.width + x));
    }
  }
}

}  // namespace

ComponentSize SizeOf(const FrameShape& shape, int component) {
  if (component == 0) return {shape.width, shape.height};
  return {vidproc::ChromaColumns(shape), vidproc::ChromaRows(shape)};
}

Samples Painted(const FrameShape& shape, Content content, Random& random) {
  Samples samples;
  for (int c = 0; c < 3; ++c) {
    const ComponentSize size = SizeOf(shape, c);
    Paint(content, size.width, size.height, random, samples.component[c]);
  }
  return samples;
}

std::string FirstDifference(const FrameShape& shape, const Samples& expected, const Samples& actual) {
  std::string text;
  ForEachSample(shape, [&](int c, int x, int y, std::size_t i) {
    if (!text.empty() || expected.component[c][i] == actual.component[c][i]) return;
    std::ostringstream difference;
    difference << (c == 0   ? "luma"
                   : c == 1 ? "Cb"
                            : "Cr")
               << " sample " << x << " of row " << y << ": expected " << int{expected.component[c][i]} << ", got "
               << int{actual.component[c][i]};
    text = difference.str();
  });
  return text;
}

std::uint8_t* FormatFrame::Plane::Row(std::uint8_t* image, int y) const {
  return image + (stride < 0 ? (y - rows + 1) * stride : y * stride);
}

FormatFrame::FormatFrame(const FrameShape& shape, const Placement& placement, Random& random) : shape(shape) {
  const int chromaColumns = vidproc::ChromaColumns(shape);
  const auto addPlane = [&](int rowBytes, int rows) {
    const std::ptrdiff_t stride = rowBytes + placement.padding;
    // Rows of packed frames with room for a whole last pair have one.
    const int pairBytes = 4 * chromaColumns;
    Plane plane;
    plane.rowBytes = vidproc::IsPacked(shape.format) && stride >= pairBytes ? pairBytes : rowBytes;
    plane.rows = rows;
    plane.stride = placement.bottomUp ? -stride : stride;
    const std::size_t bytes = static_cast<std::size_t>((rows - 1) * stride + plane.rowBytes);
    plane.memory = std::make_unique<GuardedMemory>(bytes, placement.flush, random);
    plane.memory->Load();
    planes.push_back(std::move(plane));
  };
  addPlane(vidproc::IsPacked(shape.format) ? 2 * shape.width : shape.width, shape.height);
  if (vidproc::IsPacked(shape.format)) return;
  const bool apart = vidproc::HasChromaPlanes(shape.format);
  addPlane(apart ? chromaColumns : 2 * chromaColumns, vidproc::ChromaRows(shape));
  if (apart) addPlane(chromaColumns, vidproc::ChromaRows(shape));
}

std::uint8_t* FormatFrame::Sample(int component, int x, int y) const {
  int plane = 0;
  int place = x;
  switch (shape.format) {
    case PixelFormat::kUyvy:
      place = component == 0 ? 2 * x + 1 : 4 * x + 2 * (component - 1);
      break;
    case PixelFormat::kYuyv:
      place = component == 0 ? 2 * x : 4 * x + 2 * component - 1;
      break;
    case PixelFormat::kNv12:
      plane = component == 0 ? 0 : 1;
      if (component != 0) place = 2 * x + component - 1;
      break;
    default:
      plane = component;
  }
  const Plane& of = planes[static_cast<std::size_t>(plane)];
  return place < of.rowBytes ? of.Row(of.memory->Live(), y) + place : nullptr;
}

void FormatFrame::Put(const Samples& samples) {
  for (const Plane& plane : planes) plane.memory->Load();
  ForEachSample(shape, [&](int c, int x, int y, std::size_t i) {
    if (std::uint8_t* const sample = Sample(c, x, y)) *sample = samples.component[c][i];
  });
}

Samples FormatFrame::Get() const {
  Samples samples;
  ForEachSample(shape, [&](int c, int x, int y, std::size_t) {
    const std::uint8_t* const sample = Sample(c, x, y);
    samples.component[c].push_back(sample != nullptr ? *sample : samples.component[c].back());
  });
  return samples;
}

vidproc::InputPlanes FormatFrame::Input() const {
  vidproc::InputPlanes input{};
  for (std::size_t p = 0; p < planes.size(); ++p) {
    input.plane[p] = planes[p].Row(planes[p].memory->Live(), 0);
    input.stride[p] = planes[p].stride;
  }
  return input;
}

vidproc::OutputPlanes FormatFrame::Output() const {
  vidproc::OutputPlanes output{};
  for (std::size_t p = 0; p < planes.size(); ++p) {
    output.plane[p] = planes[p].Row(planes[p].memory->Live(), 0);
    output.stride[p] = planes[p].stride;
  }
  return output;
}

std::string FormatFrame::FirstForeignWrite() {
  for (const Plane& plane : planes) {
    for (int y = 0; y < plane.rows; ++y) {
      std::copy_n(plane.Row(plane.memory->Live(), y), plane.rowBytes, plane.Row(plane.memory->Expected(), y));
    }
    const auto stride = static_cast<std::size_t>(std::abs(plane.stride));
    if (std::string text = plane.memory->FirstDifference(0, stride); !text.empty()) return text;
  }
  return {};
}

}  // namespace testing_support
