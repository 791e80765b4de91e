// Where a byte stands in a text, as a person counts.
#include "scene/TextPlace.h"

#include <algorithm>

#include <fmt/format.h>

namespace mapexport {

std::string TextPlace(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  // npos + 1 is 0, the start of the only line.
  const std::string_view inLine = before.substr(before.rfind('\n') + 1);
  const auto column =
      1 + std::count_if(inLine.begin(), inLine.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;  // one byte of each character
      });
  return fmt::format("line {}, column {}", line, column);
}

}  // namespace mapexport
