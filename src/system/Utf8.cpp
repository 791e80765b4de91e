#include "system/Utf8.h"

#include <algorithm>
#include <iterator>

namespace mapexport {

CodePoint FirstCodePoint(std::string_view text) {
  const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byteAt(0);
  if (lead < 0x80) return {lead, 1, true};

  const CodePoint invalid{lead, 1, false};
  std::size_t bytes = 0;
  char32_t least = 0;
  char32_t value = 0;
  if ((lead & 0xE0) == 0xC0) {
    bytes = 2;
    least = 0x80;
    value = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    bytes = 3;
    least = 0x800;
    value = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    bytes = 4;
    least = 0x10000;
    value = lead & 0x07;
  } else {
    return invalid;
  }
  if (text.size() < bytes) return invalid;
  for (std::size_t i = 1; i < bytes; ++i) {
    if (!ContinuesCharacter(text[i])) return invalid;
    value = (value << 6) | (byteAt(i) & 0x3F);
  }
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < least || value > 0x10FFFF || surrogate) return invalid;
  return {value, bytes, true};
}

std::size_t FindInvalidUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const CodePoint point = FirstCodePoint(text.substr(at));
    if (!point.valid) return at;
    at += point.bytes;
  }
  return std::string_view::npos;
}

std::string_view WholeCharacters(std::string_view text, std::size_t mostBytes) {
  if (text.size() <= mostBytes) return text;
  while (mostBytes > 0 && ContinuesCharacter(text[mostBytes])) --mostBytes;
  return text.substr(0, mostBytes);
}

bool IsControl(char32_t codePoint) {
  return IsControlCode(codePoint) || codePoint == 0x061C ||
         (codePoint >= 0x200E && codePoint <= 0x200F) ||
         (codePoint >= 0x2028 && codePoint <= 0x202E) ||
         (codePoint >= 0x2066 && codePoint <= 0x2069);
}

bool IsInvisible(char32_t codePoint) {
  struct Range {
    char32_t first, last;
  };
  // Default_Ignorable_Code_Point, interlinear annotations, controls of hieroglyphs.
  static constexpr Range kInvisible[] = {
      {0x00AD, 0x00AD},   {0x034F, 0x034F},  {0x061C, 0x061C},   {0x115F, 0x1160},
      {0x17B4, 0x17B5},   {0x180B, 0x180F},  {0x200B, 0x200F},   {0x202A, 0x202E},
      {0x2060, 0x206F},   {0x3164, 0x3164},  {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},
      {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},  {0x13430, 0x13455}, {0x1BCA0, 0x1BCA3},
      {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}};
  if (codePoint < kInvisible[0].first) return IsControl(codePoint);
  return IsControl(codePoint) ||
         std::any_of(std::begin(kInvisible), std::end(kInvisible), [codePoint](const Range& range) {
           return codePoint >= range.first && codePoint <= range.last;
         });
}

bool IsUtf16(std::string_view beginning) {
  return beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF");
}

}  // namespace mapexport
