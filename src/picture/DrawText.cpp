#include "picture/DrawText.h"

#include <algorithm>
#include <cstddef>

namespace mapexport {
namespace {

void FillSquare(Picture& picture, int x, int y, int size, Rgb colour) {
  const auto [width, height] = picture.Size();
  for (int row = std::max(0, y); row < std::min(height, y + size); ++row) {
    for (int column = std::max(0, x); column < std::min(width, x + size); ++column) {
      picture.At(column, row) = colour;
    }
  }
}

void DrawGlyph(Picture& picture, int x, int y, int scale, Rgb colour, char character) {
  const bool known = character >= kFirstGlyph && character <= '~';
  const std::string_view glyph =
      kGlyphs.at(static_cast<std::size_t>((known ? character : '?') - kFirstGlyph));
  for (int row = 0; row < kGlyphHeight; ++row) {
    for (int column = 0; column < kGlyphWidth; ++column) {
      const int place = row * (kGlyphWidth + 1) + column;
      if (glyph[static_cast<std::size_t>(place)] != '#') continue;
      FillSquare(picture, x + column * scale, y + row * scale, scale, colour);
    }
  }
}

}  // namespace

void DrawText(Picture& picture, int x, int y, int scale, Rgb colour, std::string_view text) {
  for (const char character : text) {
    if ((static_cast<unsigned char>(character) & 0xC0) == 0x80) continue;  // a "?" per character
    if (x >= picture.Size().width) return;
    if (character != ' ') DrawGlyph(picture, x, y, scale, colour, character);
    x += kAdvance * scale;
  }
}

}  // namespace mapexport
