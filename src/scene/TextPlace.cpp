// Where a byte stands in a text, as a person counts.
#include "scene/TextPlace.h"

#include <algorithm>
#include <functional>

#include <fmt/format.h>

#include "system/Utf8.h"

namespace mapexport {

std::string TextPlace(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  // npos + 1 is 0, the start of the only line.
  const std::string_view inLine = before.substr(before.rfind('\n') + 1);
  const auto column = 1 + std::ranges::count_if(inLine, std::not_fn(ContinuesCharacter));
  return fmt::format("line {}, column {}", line, column);
}

}  // namespace mapexport
