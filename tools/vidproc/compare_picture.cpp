// The before/after picture; see compare_picture.h.
#include "compare_picture.h"

#include <algorithm>

#include "bitmap_font.h"

namespace vidproc::tool {
namespace {

constexpr Rgb kBackground{24, 26, 30};
constexpr Rgb kLabel{235, 235, 235};
constexpr int kGap = 4;

Size AtHeight(Size size, int height) {
  const long width = (static_cast<long>(size.width) * height + size.height / 2) / size.height;
  return {static_cast<int>(std::max(1L, width)), height};
}

}  // namespace

Image ComparePicture(const Picture& before, const Picture& after, const ColourTags& colour, const std::string& what) {
  const int height = std::max(before.size.height, after.size.height);
  const Size left = AtHeight(before.size, height);
  const Size right = AtHeight(after.size, height);
  const std::string labelBefore = "before " + ToString(before.size);
  const std::string labelAfter = "after " + ToString(after.size) + " " + what;
  int dot = std::clamp(height / 200, 1, 4);
  while (dot > 1 && Image::TextWidth(labelAfter, dot) + 4 * dot > right.width) --dot;
  const int bar = (kGlyphHeight + 5) * dot;
  Image image({left.width + kGap + right.width, bar + height}, kBackground);
  image.Text(3 * dot, 3 * dot, dot, kLabel, labelBefore);
  image.Text(left.width + kGap + 3 * dot, 3 * dot, dot, kLabel, labelAfter);
  image.Place(ToRgb(before, colour, left), 0, bar);
  image.Place(ToRgb(after, colour, right), left.width + kGap, bar);
  return image;
}

}  // namespace vidproc::tool
