#include "system/JsonStream.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <utility>

#include <fmt/format.h>

#include "system/Utf8.h"

namespace mapexport {
namespace {

constexpr std::size_t kFlushBytes = 1 << 16;
constexpr std::size_t kDeepestIndent = 20;

// The shortest digits of this float, read as a double, are half-way between two floats and round to
// the wrong one. It is the only such float; all were tried.
constexpr float kInTheMiddle = 7.0385307e-26f;
constexpr std::string_view kItsDigits = "7.0385307e-26";

}  // namespace

void JsonStream::Open(char bracket, bool onLines) {
  Separate();
  buffer_ += bracket;
  open_.push_back({onLines, true});
}

void JsonStream::Close(char bracket) {
  const Level closed = open_.back();
  open_.pop_back();
  if (closed.onLines && !closed.empty) BreakLine();
  buffer_ += bracket;
  if (!open_.empty()) return;
  buffer_ += '\n';
  Flush();
}

void JsonStream::Key(std::string_view key) {
  Separate();
  Quote(key);
  buffer_ += ": ";
  afterKey_ = true;
}

void JsonStream::Text(std::string_view text) {
  Separate();
  Quote(text);
}

void JsonStream::Number(float number) {
  if (!std::isfinite(number)) {
    Text(std::isnan(number) ? "NaN" : number > 0 ? "Infinity" : "-Infinity");
    return;
  }
  Separate();
  if (std::abs(number) == kInTheMiddle) {
    if (number < 0) buffer_ += '-';
    buffer_ += kItsDigits;
    return;
  }
  char digits[32];
  buffer_.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void JsonStream::Separate() {
  if (std::exchange(afterKey_, false) || open_.empty()) return;
  if (buffer_.size() >= kFlushBytes) Flush();
  Level& level = open_.back();
  if (!level.empty) buffer_ += ',';
  if (level.onLines) {
    BreakLine();
  } else if (!level.empty) {
    buffer_ += ' ';
  }
  level.empty = false;
}

void JsonStream::BreakLine() {
  buffer_ += '\n';
  buffer_.append(indent_ * std::min(open_.size(), kDeepestIndent), ' ');
}

void JsonStream::Quote(std::string_view text) {
  constexpr std::string_view kEscaped = "\"\\\b\f\n\r\t";
  constexpr std::string_view kLetters = "\"\\bfnrt";
  buffer_ += '"';
  while (!text.empty()) {
    const CodePoint point = FirstCodePoint(text);
    if (!point.valid) {
      buffer_ += "\uFFFD";
    } else if (const std::size_t i = kEscaped.find(text[0]); i != std::string_view::npos) {
      buffer_ += '\\';
      buffer_ += kLetters[i];
    } else if (IsInvisible(point.value)) {
      AppendEscape(point.value);
    } else {
      buffer_ += text.substr(0, point.bytes);
    }
    text.remove_prefix(point.bytes);
  }
  buffer_ += '"';
}

void JsonStream::AppendEscape(char32_t value) {
  const auto append = [this](std::uint32_t unit) {
    fmt::format_to(std::back_inserter(buffer_), "\\u{:04x}", unit);
  };
  if (value > 0xFFFF) append(0xD800 + ((value - 0x10000) >> 10));
  append(value > 0xFFFF ? 0xDC00 + ((value - 0x10000) & 0x3FF) : value);
}

void JsonStream::Flush() {
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

}  // namespace mapexport
