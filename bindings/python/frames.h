// Frames of Python's buffers: NumPy arrays, bytes and whatever else gives its memory away. Nothing is copied.
#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <vector>
#include <vidproc/vidproc.hpp>

namespace vidproc::python {

/// A name such as "NV12" or "centre"; raises ValueError with the names that there are.
vidproc_format FormatNamed(const std::string& name);
vidproc_siting SitingNamed(const std::string& name);

/// A frame in buffers that stay borrowed as long as this lives. The frame is one buffer of all its planes, one after
/// another, or a sequence of planes whose first dimension is rows that may lie anywhere. Raises TypeError and
/// ValueError for anything else.
class BorrowedFrame {
 public:
  enum class Access { kRead, kWrite };
  BorrowedFrame(const pybind11::object& frame, const FrameInfo& info, const char* name, Access access);

  Input AsInput() const;
  const Output& AsOutput() const { return view; }

 private:
  void TakeWhole(const FrameInfo& info, const char* name);
  void TakePlane(const FrameInfo& info, const char* name, int plane);
  void Borrow(const pybind11::handle& buffer, const char* name, Access access);

  Output tight = {};  ///< the same frame without padding: its rows and their bytes
  Output view = {};
  std::vector<pybind11::buffer_info> buffers;
};

}  // namespace vidproc::python
