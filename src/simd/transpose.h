// Transposes inside the 128-bit tiles of a set of vectors, the same source for every width.
#pragma once

namespace vidproc::VIDPROC_TARGET {
namespace {

/// In every tile, row i of the 8 x 8 matrix of 16-bit values becomes column i.
inline void TransposeTiles(I16 (&row)[8]) {
  Raw a[8];
  Raw b[8];
  for (int i = 0; i < 4; ++i) {
    a[2 * i] = ZipLow16(row[i].raw, row[i + 4].raw);
    a[2 * i + 1] = ZipHigh16(row[i].raw, row[i + 4].raw);
  }
  for (int i = 0; i < 4; ++i) {
    b[2 * i] = ZipLow16(a[i], a[i + 4]);
    b[2 * i + 1] = ZipHigh16(a[i], a[i + 4]);
  }
  for (int i = 0; i < 4; ++i) {
    row[2 * i] = I16{ZipLow16(b[i], b[i + 4])};
    row[2 * i + 1] = I16{ZipHigh16(b[i], b[i + 4])};
  }
}

/// In every tile, row i of the 16 x 16 matrix of bytes becomes column i.
inline void TransposeTiles(U8 (&row)[16]) {
  Raw a[16];
  Raw b[16];
  for (int i = 0; i < 8; ++i) {
    a[2 * i] = ZipLow8(row[i].raw, row[i + 8].raw);
    a[2 * i + 1] = ZipHigh8(row[i].raw, row[i + 8].raw);
  }
  for (int i = 0; i < 8; ++i) {
    b[2 * i] = ZipLow8(a[i], a[i + 8]);
    b[2 * i + 1] = ZipHigh8(a[i], a[i + 8]);
  }
  for (int i = 0; i < 8; ++i) {
    a[2 * i] = ZipLow8(b[i], b[i + 8]);
    a[2 * i + 1] = ZipHigh8(b[i], b[i + 8]);
  }
  for (int i = 0; i < 8; ++i) {
    row[2 * i] = U8{ZipLow8(a[i], a[i + 8])};
    row[2 * i + 1] = U8{ZipHigh8(a[i], a[i + 8])};
  }
}

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
