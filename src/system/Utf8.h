// UTF-8: taking texts of unknown encoding apart, and the kinds of their characters.
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

/// The offset of the first byte that begins no valid character, npos when there is none.
std::size_t FindInvalidUtf8(std::string_view text);

/// Whether the byte continues a character of UTF-8 that began before it.
constexpr bool ContinuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// `text` up to `mostBytes`, or up to the character that this would cut in two.
std::string_view WholeCharacters(std::string_view text, std::size_t mostBytes);

/// Whether the code point is a control character of ASCII or Latin-1: below U+0020, or from U+007F
/// to U+009F.
constexpr bool IsControlCode(char32_t codePoint) {
  return codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F);
}

/// Whether the code point may do more to a terminal or to lines than show a character:
/// IsControlCode, line and paragraph separators, and marks that change the writing direction.
bool IsControl(char32_t codePoint);

/// Whether the code point can't be seen, so that texts with and without it look the same:
/// IsControl, and what Unicode 15 lets fonts ignore (soft hyphen, zero width, variation selectors,
/// tags, ...) or uses to lay out other characters.
bool IsInvisible(char32_t codePoint);

/// What some programs put before the text of a UTF-8 file.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Whether a text that begins so is UTF-16.
bool IsUtf16(std::string_view beginning);

}  // namespace mapexport
