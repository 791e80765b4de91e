// Taking texts of unknown encoding apart as UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace mapexport {

struct CodePoint {
  char32_t value = 0;     ///< the byte's own value when it is not valid UTF-8
  std::size_t bytes = 1;  ///< 1 to 4; 1 when it is not valid UTF-8
  bool valid = false;
};

/// The first code point of `text`, which must not be empty. Overlong forms, surrogates and values
/// above U+10FFFF are not valid.
CodePoint FirstCodePoint(std::string_view text);

/// Whether a terminal or a reader of lines may take the code point for more than a character to
/// show: the control characters below U+0020 and from U+007F to U+009F, line and paragraph
/// separators, and those that turn the writing direction.
bool IsControl(char32_t codePoint);

/// Whether the code point can't be seen, so that two texts with and without it look alike:
/// IsControl, and what Unicode 15 lets fonts ignore (soft hyphen, zero width, variation selectors,
/// tags, ...) or uses to lay out other characters.
bool IsInvisible(char32_t codePoint);

}  // namespace mapexport
