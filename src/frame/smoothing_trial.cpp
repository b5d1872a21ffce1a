// Trial of a separable smoothing filter on one plane of bytes: 7 taps down the columns, then along the rows at spacings
// of 2, 4 and 2. Nothing but three printed dumps of the intermediate data comes out.
//
//   vertical    v(x, y) = (sum of k(i) b(x, y + i - 3) + 256) >> 9, edge rows repeated; stored column by column
//   horizontal  the same along a row of the column store, written back transposed
//
// kept: the margins of the column store are filled from columns that the vertical pass has not written, the horizontal
// pass counts columns from the store's start rather than from the plane's first column, and later horizontal passes
// overwrite earlier ones. In small or very uneven planes these reach outside the working memory: there reads give 0 and
// writes are left out.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "vidproc/video_processor.h"

namespace {

constexpr int kTaps = 7;
constexpr int kKernel[kTaps] = {3, 31, 124, 196, 124, 31, 3};  // sums to 512: results stay bytes
constexpr int kEdgeRows = kTaps / 2;
constexpr int kMarginColumns = 12;
constexpr int kDumpSize = 20;

int Rounded(int sum) { return (sum + 256) >> 9; }

/// Zero-filled working memory that can be addressed anywhere.
template <class Value>
class WorkingMemory {
 public:
  explicit WorkingMemory(std::uint64_t count) : count(count) {
    if (count > SIZE_MAX) throw std::bad_alloc();
    values = std::make_unique<Value[]>(static_cast<std::size_t>(count));
  }
  int Read(std::int64_t index) const { return Holds(index) ? values[static_cast<std::size_t>(index)] : 0; }
  void Write(std::int64_t index, int value) {
    if (Holds(index)) values[static_cast<std::size_t>(index)] = static_cast<Value>(value);
  }

 private:
  bool Holds(std::int64_t index) const { return static_cast<std::uint64_t>(index) < count; }

  std::uint64_t count;
  std::unique_ptr<Value[]> values;
};

class SeparableSmoothing {
 public:
  SeparableSmoothing(std::int64_t width, std::int64_t height)
      : width(width), height(height), bytes(Count()), columns(Count()) {}

  void Run(const unsigned char* plane, std::ptrdiff_t pitch) {
    CopyWithEdges(plane, pitch);
    Dump("pC\n", bytes, 0, width);
    FilterVertically();
    Dump("pS\n", columns, ColumnStart(0), height);
    FillMargins();
    for (int step : {2, 4, 2}) FilterHorizontally(step);
    Dump("AFTER\n", bytes, 0, width);
  }

 private:
  std::uint64_t Count() const {
    return static_cast<std::uint64_t>(height + 24) * static_cast<std::uint64_t>(2 * width + 48);
  }
  std::int64_t ColumnStart(std::int64_t x) const { return (kMarginColumns + x) * height; }

  void CopyWithEdges(const unsigned char* plane, std::ptrdiff_t pitch) {
    for (std::int64_t y = 0; y < height + 2 * kEdgeRows; ++y) {
      const std::int64_t row = std::clamp<std::int64_t>(y - kEdgeRows, 0, height - 1);
      for (std::int64_t x = 0; x < width; ++x) bytes.Write(y * width + x, plane[row * pitch + x]);
    }
  }

  void FilterVertically() {
    for (std::int64_t y = 0; y < height; ++y) {
      for (std::int64_t x = 0; x < width; ++x) {
        int sum = 0;
        for (int k = 0; k < kTaps; ++k) sum += kKernel[k] * bytes.Read((y + k) * width + x);
        columns.Write(ColumnStart(x) + y, Rounded(sum));
      }
    }
  }

  void FillMargins() {
    for (int m = 0; m < kMarginColumns; m += 4) {
      CopyFourColumns(kMarginColumns, m);
      CopyFourColumns(width + kMarginColumns - 4, width + kMarginColumns + m);
    }
  }
  void CopyFourColumns(std::int64_t from, std::int64_t to) {
    for (std::int64_t i = 0; i < 4 * height; ++i)
      columns.Write(ColumnStart(to) + i, columns.Read(ColumnStart(from) + i));
  }

  void FilterHorizontally(int step) {
    for (std::int64_t y = 0; y < height; ++y) {
      for (std::int64_t j = 0; j * step < width; ++j) {
        int sum = 0;
        for (int c = 0; c < kTaps; ++c) sum += kKernel[c] * columns.Read(y * height + j + c * step * height);
        bytes.Write(y + j * width, Rounded(sum));
      }
    }
  }

  template <class Value>
  static void Dump(const char* title, const WorkingMemory<Value>& memory, std::int64_t start, std::int64_t stride) {
    std::puts(title);
    for (int r = 0; r < kDumpSize; ++r) {
      for (int c = 0; c < kDumpSize; ++c) std::printf("%d, ", memory.Read(start + r * stride + c));
      std::putchar('\n');
    }
  }

  std::int64_t width;
  std::int64_t height;
  WorkingMemory<std::uint8_t> bytes;
  WorkingMemory<std::uint16_t> columns;
};

}  // namespace

int BilatFilter(unsigned char* plane, int rowBytes, int rows, int pitch) {
  if (plane == nullptr || rowBytes < 1 || rows < 1) return 0;
  SeparableSmoothing(rowBytes, rows).Run(plane, pitch);
  return 0;
}
