#include "system/PrintableText.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include <fmt/format.h>

#include "system/CombiningMarks.h"
#include "system/Utf8.h"

namespace mapexport {

namespace {

constexpr std::string_view kCutMark = "...";

constexpr CodePointRange kWide[] = {{0x1100, 0x115F},   {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},
                                    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                                    {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF},
                                    {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};

bool IsIn(std::span<const CodePointRange> ascending, char32_t codePoint) {
  const auto range = std::ranges::lower_bound(ascending, codePoint, {}, &CodePointRange::last);
  return range != ascending.end() && range->first <= codePoint;
}

std::size_t WidthOf(char32_t codePoint) {
  if (IsIn(kCombiningMarks, codePoint)) return 0;
  return IsIn(kWide, codePoint) ? 2 : 1;
}

}  // namespace

std::string PrintableText(std::string_view text, std::size_t maxColumns) {
  std::string shown;
  std::size_t columns = 0;
  std::size_t marks = 0;  // without width; they are limited, too
  std::size_t keep = 0;   // bytes of `shown` that leave room for the mark of a cut
  while (!text.empty()) {
    const CodePoint point = FirstCodePoint(text);
    std::string piece;
    if (!point.valid) {
      piece = fmt::format("\\x{:02X}", static_cast<std::uint32_t>(point.value));
    } else if (IsInvisible(point.value)) {
      const auto value = static_cast<std::uint32_t>(point.value);
      piece = value > 0xFFFF ? fmt::format("\\U{:08X}", value) : fmt::format("\\u{:04X}", value);
    } else {
      piece = text.substr(0, point.bytes);
    }
    const std::size_t width = piece.size() > point.bytes ? piece.size() : WidthOf(point.value);
    if (width == 0) ++marks;
    if (columns + width > maxColumns || marks > maxColumns) {
      return shown.substr(0, keep).append(kCutMark);
    }
    shown += piece;
    columns += width;
    if (columns + kCutMark.size() <= maxColumns) keep = shown.size();
    text.remove_prefix(point.bytes);
  }
  return shown;
}

std::string Quoted(std::string_view text) {
  return '"' + PrintableText(text) + '"';
}

std::size_t DisplayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const CodePoint point = FirstCodePoint(text);
    width += WidthOf(point.value);
    text.remove_prefix(point.bytes);
  }
  return width;
}

}  // namespace mapexport
