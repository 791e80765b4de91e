// Writes text into a picture.
#pragma once

#include <string_view>

#include "picture/Glyphs.h"
#include "picture/Picture.h"

namespace mapexport {

/// Pixels from one character to the next and from one line to the next, at scale 1.
inline constexpr int kAdvance = kGlyphWidth + 1;
inline constexpr int kLineHeight = kGlyphHeight + 5;

/// Writes `text` with its left upper corner at (x, y), each pixel of a character `scale` pixels
/// large. What is outside of the picture is cut. Characters that are not printable ASCII are "?".
void DrawText(Picture& picture, int x, int y, int scale, Rgb colour, std::string_view text);

}  // namespace mapexport
