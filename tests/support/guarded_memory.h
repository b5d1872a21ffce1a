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

/// A frame's memory three times: as it is before a run, as it should be after it, and the live one that is run on.
class GuardedMemory {
 public:
  /// Room for `bytes`, flush with the forbidden page after it or before it.
  GuardedMemory(std::size_t bytes, Flush flush, Random& random) {
    const std::size_t page = PageBytes();
    const std::size_t usable = (bytes + page - 1) / page * page;
    mapped = usable + 2 * page;
    base = static_cast<std::uint8_t*>(ReservePages(mapped));
    if (base == nullptr) throw std::bad_alloc();
    live = base + page;
    if (!OpenPages(live, usable)) throw std::bad_alloc();
    offset = flush == Flush::kEnd ? usable - bytes : 0;
    before.resize(usable);
    for (std::uint8_t& byte : before) byte = random.Byte();
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
  void Load() { std::copy(before.begin(), before.end(), live); }

  bool HasChanged() const { return !std::equal(before.begin(), before.end(), live); }
  /// Empty when live memory is as expected. `start` and `stride` say where the frame's rows lie.
  std::string FirstDifference(std::size_t start, std::size_t stride) const {
    const auto at = static_cast<std::size_t>(std::mismatch(after.begin(), after.end(), live).first - after.begin());
    if (at == after.size()) return {};
    std::ostringstream text;
    const auto place = static_cast<std::ptrdiff_t>(at) - static_cast<std::ptrdiff_t>(offset + start);
    const auto pitch = static_cast<std::ptrdiff_t>(stride);
    text << "byte " << place;
    if (place >= 0) text << " (row " << place / pitch << ", column " << place % pitch << ")";
    text << "\n  expected" << Around(after.data(), at) << "\n  actual  " << Around(live, at);
    return text.str();
  }

 private:
  std::string Around(const std::uint8_t* image, std::size_t at) const {
    std::ostringstream text;
    for (std::size_t i = at < 8 ? 0 : at - 8; i < std::min(at + 8, after.size()); ++i) {
      text << (i == at ? " [" : " ") << int{image[i]} << (i == at ? "]" : "");
    }
    return text.str();
  }

  std::uint8_t* base = nullptr;
  std::uint8_t* live = nullptr;
  std::size_t mapped = 0;
  std::size_t offset = 0;
  std::vector<std::uint8_t> before;
  std::vector<std::uint8_t> after;
};

}  // namespace testing_support
