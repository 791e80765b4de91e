#include "importer/text/StatementLines.h"

#include <algorithm>

namespace mapexport {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

}  // namespace

bool StatementLines::Next() {
  while (!rest_.empty()) {
    line_ = linesTaken_ + 1;
    std::string_view line = TakeLine();
    if (line.ends_with('\\') && !Trimmed(line).starts_with('#')) {
      joined_.clear();
      while (line.ends_with('\\')) {
        joined_ += line.substr(0, line.size() - 1);
        joined_ += ' ';
        line = TakeLine();
      }
      joined_ += line;
      line = joined_;
    }
    statement_ = Trimmed(line);
    if (!statement_.empty() && statement_.front() != '#') return true;
  }
  return false;
}

std::string_view StatementLines::TakeLine() {
  const std::size_t end = std::min(rest_.find_first_of("\r\n"), rest_.size());
  const std::string_view line = rest_.substr(0, end);
  rest_.remove_prefix(end);
  if (rest_.starts_with("\r\n"))
    rest_.remove_prefix(2);
  else if (!rest_.empty())
    rest_.remove_prefix(1);
  ++linesTaken_;
  return line;
}

std::string_view TakeWord(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
  const std::string_view word = rest.substr(0, rest.find_first_of(kBlanks));
  rest.remove_prefix(word.size());
  rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
  return word;
}

}  // namespace mapexport
