#include "importer/text/StatementLines.h"

#include <algorithm>

namespace mapexport {
namespace {

std::string_view Trimmed(std::string_view text) {
  DropBlanks(text);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
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
  // A text may have no line feed for long, so that it is searched only once.
  if (toFeed_ == kUnknown) toFeed_ = std::min(rest_.find('\n'), rest_.size());
  const std::size_t end = std::min(rest_.substr(0, toFeed_).find('\r'), toFeed_);
  const std::string_view line = rest_.substr(0, end);
  const bool isCrLf = end < toFeed_ && end + 1 == toFeed_ && toFeed_ < rest_.size();
  const std::size_t taken = std::min(end + (isCrLf ? 2 : 1), rest_.size());
  toFeed_ = taken > toFeed_ ? kUnknown : toFeed_ - taken;
  rest_.remove_prefix(taken);
  ++linesTaken_;
  return line;
}

}  // namespace mapexport
