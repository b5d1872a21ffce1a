// Letters for pictures: 5 x 7 dots each, in a cell of 6 x 8.
#pragma once

namespace vidproc::tool {

constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 7;
constexpr int kGlyphAdvance = 6;
constexpr int kLineAdvance = 9;

/// True where the character has ink; characters without a glyph have none.
bool GlyphDot(char character, int column, int row);

}  // namespace vidproc::tool
