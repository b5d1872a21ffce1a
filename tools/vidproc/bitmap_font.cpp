// The dots of the built-in font; see bitmap_font.h.
#include "bitmap_font.h"

#include <cstdint>

namespace vidproc::tool {
namespace {

constexpr char kFirst = ' ';
constexpr char kLast = '~';

// 35 bits a glyph: rows from the top, dots from the left, the first dot highest. From ' ' on, in ASCII order.
constexpr std::uint64_t kGlyphs[kLast - kFirst + 1] = {
    0x000000000, 0x108421004, 0x000000000, 0x000000000, 0x000000000, 0x672222273, 0x000000000,
    0x000000000,  //  !"#$%&'
    0x088842082, 0x208210888, 0x000000000, 0x0084f9080, 0x000001888, 0x0000f8000, 0x00000018c,
    0x042222210,  // ()*+,-./
    0x3a33ae62e, 0x11842108e, 0x3a213221f, 0x3a213062e, 0x08ca97c42, 0x7e1e0862e, 0x3a10f462e,
    0x7c2211084,  // 01234567
    0x3a317462e, 0x3a317842e, 0x018c03180, 0x000000000, 0x000000000, 0x001f07c00, 0x000000000,
    0x3a2131004,  // 89:;<=>?
    0x000000000, 0x11518fe31, 0x7a31f463e, 0x3a308422e, 0x7a318c63e, 0x7e10f421f, 0x7e10f4210,
    0x3a30bc62f,  // @ABCDEFG
    0x4631fc631, 0x38842108e, 0x1c4210a4c, 0x4654c5251, 0x42108421f, 0x4775ac631, 0x4739ace71,
    0x3a318c62e,  // HIJKLMNO
    0x7a31f4210, 0x3a318d64d, 0x7a31f5251, 0x3e107043e, 0x7c8421084, 0x46318c62e, 0x46318a944,
    0x4631ad771,  // PQRSTUVW
    0x462a22a31, 0x462a21084, 0x7c222221f, 0x000000000, 0x000000000, 0x000000000, 0x000000000,
    0x00000001f,  // XYZ[backslash]^_
    0x000000000, 0x000e0be2f, 0x421e8c63e, 0x000e8420e, 0x042f8c62f, 0x000e8fe0e, 0x191e42108,
    0x000f8bc2e,  // `abcdefg
    0x421e8c631, 0x100c2108e, 0x080610a4c, 0x4212a6292, 0x30842108e, 0x001aad6b5, 0x001e8c631,
    0x000e8c62e,  // hijklmno
    0x001e8fa10, 0x000f8bc21, 0x0016c4210, 0x000f8383e, 0x211e42106, 0x00118c62f, 0x00118a944,
    0x0011ad6aa,                                                                                // pqrstuvw
    0x001151151, 0x00118bc2e, 0x001f1111f, 0x000000000, 0x000000000, 0x000000000, 0x000000000,  // xyz{|}~
};

}  // namespace

bool GlyphDot(char character, int column, int row) {
  if (character < kFirst || character > kLast) return false;
  const int bit = kGlyphWidth * kGlyphHeight - 1 - (row * kGlyphWidth + column);
  return (kGlyphs[character - kFirst] >> bit & 1) != 0;
}

}  // namespace vidproc::tool
