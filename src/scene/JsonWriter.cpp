// Layout, escapes and numbers of the JSON text.
#include "scene/JsonWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>

#include <fmt/format.h>

namespace mapexport {

namespace {

constexpr std::size_t kFlushSize = 64 * 1024;
// Deeper levels are indented alike: the spaces of a deep scene would outgrow all else.
constexpr std::size_t kDeepestIndent = 20;

bool ReadsBack(const char* start, const char* end, float number) {
  double read = 0;
  std::from_chars(start, end, read);
  return std::bit_cast<std::uint32_t>(static_cast<float>(read)) ==
         std::bit_cast<std::uint32_t>(number);
}

struct CodePoint {
  std::uint32_t value;
  std::size_t bytes;
};

// The first code point of valid UTF-8.
CodePoint FirstCodePoint(std::string_view utf8) {
  const auto lead = static_cast<unsigned char>(utf8[0]);
  if (lead < 0x80) return {lead, 1};
  const std::size_t bytes = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  std::uint32_t value = lead & (0x7Fu >> bytes);
  for (const char c : utf8.substr(1, bytes - 1)) {
    value = (value << 6) | (static_cast<unsigned char>(c) & 0x3Fu);
  }
  return {value, bytes};
}

// Control characters, line and paragraph separators, and what turns the writing direction or is
// hardly ever meant in a name.
bool NeedsEscape(std::uint32_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0xAD || c == 0x061C || c == 0x180E ||
         (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) ||
         (c >= 0xE0000 && c <= 0xE0FFF);
}

void AppendEscape(std::string& text, std::uint32_t c) {
  const auto append = [&text](std::uint32_t unit) {
    fmt::format_to(std::back_inserter(text), "\\u{:04x}", unit);
  };
  if (c > 0xFFFF) append(0xD800 + ((c - 0x10000) >> 10));
  append(c > 0xFFFF ? 0xDC00 + ((c - 0x10000) & 0x3FF) : c);
}

}  // namespace

void JsonWriter::Key(std::string_view name) {
  Separate();
  Quote(name);
  buffer_ += ": ";
  afterKey_ = true;
}

void JsonWriter::Text(std::string_view utf8) {
  Separate();
  Quote(utf8);
}

void JsonWriter::Integer(std::int64_t number) {
  Separate();
  std::array<char, 24> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
  buffer_.append(text.data(), result.ptr);
}

void JsonWriter::Float(float number) {
  assert(std::isfinite(number));
  Separate();
  std::array<char, 32> text;
  char* const start = text.data();
  char* const limit = start + text.size();
  char* end = std::to_chars(start, limit, number).ptr;
  // The shortest digits may lie so close to the middle between two floats that the double is the
  // middle itself and rounds to the wrong one (7.038531e-26). 17 digits always do.
  for (int decimals = 7; !ReadsBack(start, end, number) && decimals <= 16; ++decimals) {
    end = std::to_chars(start, limit, double{number}, std::chars_format::scientific, decimals).ptr;
  }
  buffer_.append(start, end);
}

void JsonWriter::Word(std::string_view word) {
  Separate();
  buffer_ += word;
}

void JsonWriter::Finish() {
  buffer_ += '\n';
  Flush();
}

void JsonWriter::Open(char bracket, Layout layout) {
  Separate();
  buffer_ += bracket;
  open_.push_back({layout, true});
}

void JsonWriter::Close(char bracket) {
  const Container container = open_.back();
  open_.pop_back();
  if (!container.empty && container.layout == Layout::kLines) BreakLine();
  buffer_ += bracket;
}

// Puts between this value (or key) and what is before it what belongs there.
void JsonWriter::Separate() {
  const bool isMemberValue = std::exchange(afterKey_, false);
  if (isMemberValue || open_.empty()) return;
  Container& container = open_.back();
  if (!container.empty) buffer_ += ',';
  if (container.layout == Layout::kLines) {
    BreakLine();
  } else if (!container.empty) {
    buffer_ += ' ';
  }
  container.empty = false;
}

void JsonWriter::BreakLine() {
  if (buffer_.size() >= kFlushSize) Flush();
  buffer_ += '\n';
  buffer_.append(2 * std::min(open_.size(), kDeepestIndent), ' ');
}

void JsonWriter::Quote(std::string_view utf8) {
  constexpr std::string_view kEscaped = "\"\\\b\f\n\r\t";
  constexpr std::string_view kLetters = "\"\\bfnrt";
  buffer_ += '"';
  while (!utf8.empty()) {
    const CodePoint point = FirstCodePoint(utf8);
    if (const std::size_t i = kEscaped.find(utf8[0]); i != std::string_view::npos) {
      buffer_ += '\\';
      buffer_ += kLetters[i];
    } else if (NeedsEscape(point.value)) {
      AppendEscape(buffer_, point.value);
    } else {
      buffer_ += utf8.substr(0, point.bytes);
    }
    utf8.remove_prefix(std::min(point.bytes, utf8.size()));
  }
  buffer_ += '"';
}

void JsonWriter::Flush() {
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

}  // namespace mapexport
