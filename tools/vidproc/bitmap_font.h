// Letters for pictures: 5 x 8 dots each, the last row for descenders, in a cell of 6 x 10.
#pragma once

namespace vidproc::tool {

constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 8;
constexpr int kGlyphAdvance = 6;
constexpr int kLineAdvance = 10;

/// True where the character has ink; characters without a glyph have none.
bool GlyphDot(char character, int column, int row);

}  // namespace vidproc::tool
