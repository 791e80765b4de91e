#include "cli/CompletionParts.h"

#include <algorithm>

namespace mapexport {

std::span<const char* const> ValueWords(const OptionInfo& option) {
  return option.kind == OptionKind::kRow ? option.rows : option.words;
}

bool ValueIsPath(const OptionInfo& option) {
  const std::string_view argument = option.argument == nullptr ? "" : option.argument;
  return argument == "FILE" || argument == "DIR" || argument == "REPORT";
}

std::string_view ShortHelp(std::string_view help) {
  std::size_t end = help.size();
  for (const std::string_view stop : {";", ": ", " (", ", "}) end = std::min(end, help.find(stop));
  return help.substr(0, end);
}

std::string WithBackslashes(std::string_view text, std::string_view special) {
  std::string escaped;
  for (const char c : text) {
    if (special.find(c) != std::string_view::npos) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

}  // namespace mapexport
