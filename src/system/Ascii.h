// Letters and digits of ASCII, whatever the locale.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The value of a hexadecimal digit; empty when `c` is none.
constexpr std::optional<unsigned> HexDigit(char c) {
  if (IsDigit(c)) return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  return std::nullopt;
}

constexpr char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// `text` with its letters A to Z in lower case.
inline std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = LowerCase(c);
  return lower;
}

/// Whether `text` begins with `start`, which is in lower case, in whatever case.
inline bool StartsWithAnyCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && std::ranges::equal(text.substr(0, start.size()), start, {},
                                                           [](char c) { return LowerCase(c); });
}

/// Whether `text` ends in `end`, which is in lower case, in whatever case.
inline bool EndsInAnyCase(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && StartsWithAnyCase(text.substr(text.size() - end.size()), end);
}

}  // namespace mapexport
