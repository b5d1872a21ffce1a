// The dots of the built-in font; see bitmap_font.h.
#include "bitmap_font.h"

#include <cstdint>

namespace vidproc::tool {
namespace {

constexpr char kFirst = ' ';
constexpr char kLast = '~';

// 40 bits a glyph: rows from the top, dots from the left, the first dot highest. From ' ' on, in ASCII order.
constexpr std::uint64_t kGlyphs[kLast - kFirst + 1] = {
    0x0000000000, 0x2108420080, 0x5280000000, 0x52beafa940, 0x0000000000, 0xce44444e60, 0x64a88ac9a0,
    0x2110000000,  //  !"#$%&'
    0x1110841040, 0x4104211100, 0x055df75400, 0x0109f21000, 0x0000003188, 0x0001f00000, 0x0000003180,
    0x0844444200,  // ()*+,-./
    0x74675cc5c0, 0x23084211c0, 0x74426443e0, 0x744260c5c0, 0x11952f8840, 0xfc3c10c5c0, 0x7421e8c5c0,
    0xf844221080,  // 01234567
    0x7462e8c5c0, 0x7462f085c0, 0x0318063000, 0x0318003188, 0x1111041040, 0x003e0f8000, 0x4104111100,
    0x7442620080,  // 89:;<=>?
    0x746f5bc1c0, 0x22a31fc620, 0xf463e8c7c0, 0x74610845c0, 0xf46318c7c0, 0xfc21e843e0, 0xfc21e84200,
    0x746178c5e0,  // @ABCDEFG
    0x8c63f8c620, 0x71084211c0, 0x3884214980, 0x8ca98a4a20, 0x84210843e0, 0x8eeb58c620, 0x8e7359ce20,
    0x746318c5c0,  // HIJKLMNO
    0xf463e84200, 0x74631ac9a0, 0xf463ea4a20, 0x7c20e087c0, 0xf908421080, 0x8c6318c5c0, 0x8c63152880,
    0x8c635aee20,  // PQRSTUVW
    0x8c54454620, 0x8c54421080, 0xf8444443e0, 0x72108421c0, 0x0000000000, 0x70842109c0, 0x0000000000,
    0x000000001f,  // XYZ[backslash]^_
    0x0000000000, 0x001c17c5e0, 0x843d18c7c0, 0x001d0841c0, 0x085f18c5e0, 0x001d1fc1c0, 0x323c842100,
    0x001f18bc2e,  // `abcdefg
    0x843d18c620, 0x20184211c0, 0x100c21085c, 0x84254c5240, 0x61084211c0, 0x00355ad6a0, 0x003d18c620,
    0x001d18c5c0,  // hijklmno
    0x003d18fa10, 0x001f18bc21, 0x002d884200, 0x001f0707c0, 0x423c8420c0, 0x002318c5e0, 0x0023152880,
    0x00235ad540,                                                                                      // pqrstuvw
    0x0022a22a20, 0x002318bc2e, 0x003e2223e0, 0x0000000000, 0x0000000000, 0x0000000000, 0x0013590000,  // xyz{|}~
};

}  // namespace

bool GlyphDot(char character, int column, int row) {
  if (character < kFirst || character > kLast) return false;
  const int bit = kGlyphWidth * kGlyphHeight - 1 - (row * kGlyphWidth + column);
  return (kGlyphs[character - kFirst] >> bit & 1) != 0;
}

}  // namespace vidproc::tool
