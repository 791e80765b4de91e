// The words of user property texts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace mapexport {

/// Calls `visit` with each word of the text, as the exporter tells words apart: they end at tabs
/// and line ends, and may be empty.
template <class Visitor>
void VisitWords(std::string_view text, const Visitor& visit) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\t\n\r"), text.size());
    visit(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

inline bool HasWord(std::string_view text, std::string_view word) {
  bool found = false;
  VisitWords(text, [&](std::string_view other) { found = found || other == word; });
  return found;
}

}  // namespace mapexport
