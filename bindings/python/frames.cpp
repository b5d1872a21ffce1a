#include "frames.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace py = pybind11;

namespace vidproc::python {
namespace {

using Names = std::initializer_list<std::pair<const char*, std::int32_t>>;

std::int32_t ValueOf(const char* what, const std::string& name, Names names) {
  std::string known;
  for (const auto& [text, value] : names) {
    if (name == text) return value;
    known += (known.empty() ? "" : ", ") + std::string(text);
  }
  throw py::value_error(std::string(what) + " is '" + name + "', allowed: " + known);
}

std::string TextOf(const std::vector<py::ssize_t>& shape) {
  std::string text = "(";
  for (const py::ssize_t length : shape) text += (text.size() > 1 ? ", " : "") + std::to_string(length);
  return text + (shape.size() == 1 ? ",)" : ")");
}

/// Whether the dimensions from `first` on lie one after another.
bool IsDense(const py::buffer_info& buffer, std::size_t first) {
  py::ssize_t step = 1;
  for (std::size_t d = buffer.shape.size(); d-- > first;) {
    if (buffer.shape[d] > 1 && buffer.strides[d] != step) return false;
    step *= buffer.shape[d];
  }
  return true;
}

}  // namespace

vidproc_format FormatNamed(const std::string& name) {
  return ValueOf("format", name,
                 {{"UYVY", VIDPROC_FORMAT_UYVY},
                  {"YUYV", VIDPROC_FORMAT_YUYV},
                  {"NV12", VIDPROC_FORMAT_NV12},
                  {"I420", VIDPROC_FORMAT_I420},
                  {"I422", VIDPROC_FORMAT_I422}});
}

vidproc_siting SitingNamed(const std::string& name) {
  return ValueOf("siting", name, {{"left", VIDPROC_SITING_LEFT}, {"centre", VIDPROC_SITING_CENTRE}});
}

BorrowedFrame::BorrowedFrame(const py::object& frame, const FrameInfo& info, const char* name, Access access) {
  std::uint8_t nowhere = 0;  // only distances are looked at
  tight = OutputOver(info, {&nowhere, FrameBytes(info)});
  view = tight;
  if (!py::isinstance<py::tuple>(frame) && !py::isinstance<py::list>(frame)) {
    Borrow(frame, name, access);
    TakeWhole(info, name);
    return;
  }
  const auto planes = py::reinterpret_borrow<py::sequence>(frame);
  const auto count =
      std::count_if(std::begin(tight.plane), std::end(tight.plane), [](auto* p) { return p != nullptr; });
  if (static_cast<std::ptrdiff_t>(planes.size()) != count) {
    throw py::value_error(std::string(name) + " has " + std::to_string(planes.size()) + " planes, wanted " +
                          std::to_string(count));
  }
  for (int plane = 0; plane < count; ++plane) {
    Borrow(planes[static_cast<std::size_t>(plane)], name, access);
    TakePlane(info, name, plane);
  }
}

void BorrowedFrame::Borrow(const py::handle& buffer, const char* name, Access access) {
  if (PyObject_CheckBuffer(buffer.ptr()) == 0) {
    throw py::type_error(std::string(name) + " is a " + Py_TYPE(buffer.ptr())->tp_name +
                         ", wanted an array of uint8 or a sequence of planes");
  }
  buffers.push_back(py::reinterpret_borrow<py::buffer>(buffer).request(access == Access::kWrite));
  if (buffers.back().format != "B") {
    throw py::type_error(std::string(name) + " has elements of format '" + buffers.back().format +
                         "', wanted 'B', which is uint8");
  }
}

/// Of a packed format the only plane may have rows of its own.
void BorrowedFrame::TakeWhole(const FrameInfo& info, const char* name) {
  const py::buffer_info& buffer = buffers.back();
  const std::size_t bytes = FrameBytes(info);
  if (static_cast<std::size_t>(buffer.size) == bytes && IsDense(buffer, 0)) {
    view = OutputOver(info, {static_cast<std::uint8_t*>(buffer.ptr), bytes});
    return;
  }
  if (tight.plane[1] == nullptr && buffer.ndim > 1) return TakePlane(info, name, 0);
  throw py::value_error(std::string(name) + " has shape " + TextOf(buffer.shape) + ", wanted " + std::to_string(bytes) +
                        " bytes one after another, or a sequence of planes");
}

void BorrowedFrame::TakePlane(const FrameInfo& info, const char* name, int plane) {
  const py::buffer_info& buffer = buffers.back();
  const auto rowBytes = tight.stride[plane], rows = static_cast<std::ptrdiff_t>(tight.bytes[plane]) / rowBytes;
  const bool isFitting = buffer.ndim > 1 && buffer.shape[0] == rows && buffer.size == rows * rowBytes;
  if (!isFitting || !IsDense(buffer, 1)) {
    throw py::value_error(std::string(name) + ", plane " + std::to_string(plane) + ", has shape " +
                          TextOf(buffer.shape) + ", wanted " + TextOf({rows, rowBytes}) + " with rows in one piece" +
                          (info.width % 2 != 0 ? ", whole pairs in them" : ""));
  }
  view.plane[plane] = static_cast<std::uint8_t*>(buffer.ptr);
  view.stride[plane] = buffer.strides[0];
  view.bytes[plane] = static_cast<std::size_t>((rows - 1) * std::abs(buffer.strides[0]) + rowBytes);
}

Input BorrowedFrame::AsInput() const {
  return {view.format,
          view.width,
          view.height,
          {view.plane[0], view.plane[1], view.plane[2]},
          {view.stride[0], view.stride[1], view.stride[2]},
          {view.bytes[0], view.bytes[1], view.bytes[2]}};
}

}  // namespace vidproc::python
