// Memory for frames under test. It ends (or begins) right at a page that must not be touched, so that reading past a
// frame traps; all else around the frame holds random bytes that have to survive.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "support/frame_content.h"
#include "support/pages.h"

namespace testing_support {

enum class Flush { kEnd, kBegin };

inline bool IsOfWholePages(std::size_t stride) { return stride != 0 && stride % PageBytes() == 0; }
/// The shortest stride of whole pages that leaves one between rows.
inline std::size_t StrideOfPages(std::size_t rowBytes) {
  return (rowBytes + 2 * PageBytes() - 1) / PageBytes() * PageBytes();
}

/// A frame's memory three times: as it is before a run, as it should be after it, and the live one that is run on.
class GuardedMemory {
 public:
  /// Room for `bytes`, flush with the forbidden page after it or before it. In rows that lie `stride` apart, whole
  /// pages, every row is: of the pages between rows none must be touched.
  GuardedMemory(std::size_t bytes, Flush flush, Random& random, std::size_t stride = 0) {
    const std::size_t page = PageBytes();
    const std::size_t usable = (bytes + page - 1) / page * page;
    mapped = usable + 2 * page;
    base = static_cast<std::uint8_t*>(ReservePages(mapped));
    if (base == nullptr) throw std::bad_alloc();
    live = base + page;
    pitch = IsOfWholePages(stride) ? stride : mapped;
    stretch = (usable - 1) % pitch + 1;
    for (std::size_t at = 0; at < usable; at += pitch) {
      if (!OpenPages(live + at, stretch)) throw std::bad_alloc();
    }
    offset = flush == Flush::kEnd ? usable - bytes : 0;
    before.resize(usable);
    random.Fill(before);
    after = before;
  }
  ~GuardedMemory() { ReleasePages(base, mapped); }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  std::uint8_t* Before() { return before.data() + offset; }
  std::uint8_t* Expected() { return after.data() + offset; }
  std::uint8_t* Live() { return live + offset; }

  /// Lays packed rows into the memory, before a run and after it.
  void PutRows(const std::vector<std::uint8_t>& packed, std::size_t rowBytes, std::size_t start, std::size_t stride) {
    std::uint8_t* row = Before() + start;
    for (std::size_t at = 0; at < packed.size(); at += rowBytes, row += stride) {
      std::copy_n(packed.data() + at, rowBytes, row);
    }
    after = before;
  }
  void Load() {
    for (std::size_t at = 0; at < before.size(); at += pitch) std::copy_n(before.data() + at, stretch, live + at);
  }

  /// Of memory without pages between rows.
  bool HasChanged() const { return !std::equal(before.begin(), before.end(), live); }
  /// Empty when live memory is as expected. `start` and `stride` say where the frame's rows lie.
  std::string FirstDifference(std::size_t start, std::size_t stride) const {
    for (std::size_t first = 0; first < after.size(); first += pitch) {
      const std::uint8_t* const expected = after.data() + first;
      const std::uint8_t* const different = std::mismatch(expected, expected + stretch, live + first).first;
      if (different != expected + stretch) return Describe(different - after.data(), start, stride);
    }
    return {};
  }

 private:
  std::string Describe(std::ptrdiff_t at, std::size_t start, std::size_t stride) const {
    std::ostringstream text;
    const std::ptrdiff_t place = at - static_cast<std::ptrdiff_t>(offset + start);
    const auto rowPitch = static_cast<std::ptrdiff_t>(stride);
    text << "byte " << place;
    if (place >= 0) text << " (row " << place / rowPitch << ", column " << place % rowPitch << ")";
    const auto index = static_cast<std::size_t>(at);
    text << "\n  expected" << Around(after.data(), index) << "\n  actual  " << Around(live, index);
    return text.str();
  }

  std::string Around(const std::uint8_t* image, std::size_t at) const {
    std::ostringstream text;
    const std::size_t first = at / pitch * pitch, end = first + stretch;
    for (std::size_t i = at < first + 8 ? first : at - 8; i < std::min(at + 8, end); ++i) {
      text << (i == at ? " [" : " ") << int{image[i]} << (i == at ? "]" : "");
    }
    return text.str();
  }

  std::uint8_t* base = nullptr;
  std::uint8_t* live = nullptr;
  std::size_t mapped = 0;
  std::size_t offset = 0;
  std::size_t pitch = 0, stretch = 0;  ///< the first `stretch` bytes of every `pitch` may be touched
  std::vector<std::uint8_t> before;
  std::vector<std::uint8_t> after;
};

}  // namespace testing_support
