#include "system/JsonStream.h"

#include <cassert>
#include <cmath>
#include <cstdint>
#include <ostream>

#include <fmt/format.h>

#include "system/Utf8.h"

namespace mapexport {

void JsonStream::Open(char bracket, bool onLines) {
  Separate();
  Append({&bracket, 1});
  ++depth_;
  assert(depth_ < kMaxDepth);
  levels_[depth_] = {onLines, true};
}

void JsonStream::Close(char bracket) {
  const Level closed = levels_[depth_--];
  if (closed.onLines && !closed.empty) BreakLine();
  Append({&bracket, 1});
  if (depth_ > 0) return;
  Append("\n");
  Flush();
}

void JsonStream::Key(std::string_view key) {
  Separate();
  AppendText(key);
  Append(": ");
  afterKey_ = true;
}

void JsonStream::Text(std::string_view text) {
  Separate();
  AppendText(text);
}

void JsonStream::Number(float number) {
  if (!std::isfinite(number)) {
    Text(std::isnan(number) ? "NaN" : number > 0 ? "Infinity" : "-Infinity");
    return;
  }
  Separate();
  char digits[32];
  Append({digits, std::to_chars(digits, digits + sizeof digits, number).ptr});
}

void JsonStream::Bool(bool value) {
  Separate();
  Append(value ? "true" : "false");
}

void JsonStream::Separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  Level& level = levels_[depth_];
  if (!level.empty) Append(",");
  if (level.onLines) {
    BreakLine();
  } else if (!level.empty) {
    Append(" ");
  }
  level.empty = false;
}

void JsonStream::BreakLine() {
  buffer_ += '\n';
  buffer_.append(static_cast<std::size_t>(depth_), ' ');
}

void JsonStream::AppendEscape(std::uint32_t value) {
  if (value > 0xFFFF) {
    const std::uint32_t above = value - 0x10000;
    Append(fmt::format("\\u{:04x}\\u{:04x}", 0xD800 + (above >> 10), 0xDC00 + (above & 0x3FF)));
  } else {
    Append(fmt::format("\\u{:04x}", value));
  }
}

void JsonStream::AppendText(std::string_view text) {
  Append("\"");
  while (!text.empty()) {
    const CodePoint point = FirstCodePoint(text);
    if (!point.valid) {
      Append("\uFFFD");
    } else if (IsInvisible(point.value)) {
      AppendEscape(static_cast<std::uint32_t>(point.value));
    } else {
      if (point.value == '"' || point.value == '\\') Append("\\");
      Append(text.substr(0, point.bytes));
    }
    text.remove_prefix(point.bytes);
  }
  Append("\"");
}

void JsonStream::Flush() {
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

}  // namespace mapexport
