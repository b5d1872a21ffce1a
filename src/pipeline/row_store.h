// Memory for rows of equal length, as the row kernels want it: kRowMargin bytes before each row and kRowSlack behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vidproc {

class RowStore {
 public:
  RowStore() = default;
  /// Rows of zeros. @throws std::bad_alloc
  RowStore(std::int32_t rowBytes, std::int32_t rows);

  std::uint8_t* Row(std::int32_t row) const { return firstRow + row * pitch; }

 private:
  std::unique_ptr<std::uint8_t[]> memory;
  std::uint8_t* firstRow = nullptr;
  std::ptrdiff_t pitch = 0;
};

}  // namespace vidproc
