// Where samples beyond the ends of a row come from.
#pragma once

namespace reference {

/// Byte columns left and right of a row repeat its first and its last group of four bytes, so that every component
/// meets its own kind.
inline int FoldColumn(int column, int rowBytes) {
  if (column < 0) return column & 3;
  return column < rowBytes ? column : rowBytes - 4 + ((column - rowBytes) & 3);
}

}  // namespace reference
