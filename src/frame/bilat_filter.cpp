// BilatFilter: a separable smoothing filter of 7 taps, run on a copy of a plane of bytes. Nothing comes of it but three
// dumps of the working memory on standard output:
//
//   pC     the copied rows, edge rows repeated
//   pS     the columns after the vertical pass
//   AFTER  the rows after three horizontal passes wrote their results over them
//
// kept, because the dumps show it:
//   - Filling the margins counts from the plane's first column instead of the left margin of 12: columns 12 to 15 are
//     copied over columns 0 to 11, and the right margin takes columns that nothing has written.
//   - The horizontal passes count their taps from the left margin and run over `height` columns and `width / spacing`
//     rows; the later ones overwrite results of the earlier ones.
//   - In small or very uneven planes this reaches outside the working memory: there reads give 0 and writes are left
//     out.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "vidproc/video_processor.h"

namespace {

constexpr int kTaps = 7;
constexpr int kKernel[kTaps] = {3, 31, 124, 196, 124, 31, 3};
constexpr int kKernelSumBits = 9;  // it sums to 512: results stay bytes
constexpr int kEdgeRows = kTaps / 2;
constexpr int kMarginColumns = 12;
constexpr int kDumpedSide = 20;

int Rounded(int sum) { return (sum + (1 << (kKernelSumBits - 1))) >> kKernelSumBits; }

/// Zero-filled memory that may be addressed anywhere.
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

template <class Value>
void Dump(const char* title, const WorkingMemory<Value>& memory, std::int64_t start, std::int64_t stride) {
  std::puts(title);
  for (int r = 0; r < kDumpedSide; ++r) {
    for (int c = 0; c < kDumpedSide; ++c) std::printf("%d, ", memory.Read(start + r * stride + c));
    std::putchar('\n');
  }
}

class SeparableSmoothing {
 public:
  SeparableSmoothing(std::int64_t width, std::int64_t height)
      : width(width), height(height), rows(Count()), columns(Count()) {}

  void Run(const unsigned char* plane, std::ptrdiff_t pitch) {
    CopyWithEdges(plane, pitch);
    Dump("pC\n", rows, 0, width);
    FilterVertically();
    Dump("pS\n", columns, ColumnStart(0), height);
    FillMargins();
    for (const int spacing : {2, 4, 2}) FilterHorizontally(spacing);
    Dump("AFTER\n", rows, 0, width);
  }

 private:
  std::uint64_t Count() const {
    return static_cast<std::uint64_t>(height + 24) * static_cast<std::uint64_t>(2 * width + 48);
  }
  std::int64_t ColumnStart(std::int64_t x) const { return (kMarginColumns + x) * height; }

  void CopyWithEdges(const unsigned char* plane, std::ptrdiff_t pitch) {
    for (std::int64_t y = 0; y < height + 2 * kEdgeRows; ++y) {
      const std::int64_t row = std::clamp<std::int64_t>(y - kEdgeRows, 0, height - 1);
      for (std::int64_t x = 0; x < width; ++x) rows.Write(y * width + x, plane[row * pitch + x]);
    }
  }

  void FilterVertically() {
    for (std::int64_t y = 0; y < height; ++y) {
      for (std::int64_t x = 0; x < width; ++x) {
        int sum = 0;
        for (int tap = 0; tap < kTaps; ++tap) sum += kKernel[tap] * rows.Read((y + tap) * width + x);
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
    for (std::int64_t i = 0; i < 4 * height; ++i) {
      columns.Write(ColumnStart(to) + i, columns.Read(ColumnStart(from) + i));
    }
  }

  void FilterHorizontally(int spacing) {
    for (std::int64_t x = 0; x < height; ++x) {
      for (std::int64_t y = 0; y * spacing < width; ++y) {
        int sum = 0;
        for (int tap = 0; tap < kTaps; ++tap) {
          sum += kKernel[tap] * columns.Read((x + std::int64_t{tap} * spacing) * height + y);
        }
        rows.Write(y * width + x, Rounded(sum));
      }
    }
  }

  std::int64_t width;
  std::int64_t height;
  WorkingMemory<std::uint8_t> rows;
  WorkingMemory<std::uint16_t> columns;
};

}  // namespace

int BilatFilter(unsigned char* plane, int rowBytes, int rows, int pitch) {
  if (plane == nullptr || rowBytes < 1 || rows < 1) return 0;
  SeparableSmoothing(rowBytes, rows).Run(plane, pitch);
  return 0;
}
