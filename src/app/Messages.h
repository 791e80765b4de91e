// The program's messages on standard error.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "system/Remark.h"

namespace mapexport {

/// Writes lines to standard error, each with one newline at its end; control characters in them are
/// shown as escapes. Coloured only on a terminal, and never with NO_COLOR set or TERM=dumb.
class Messages {
 public:
  /// With `quiet` only errors and warnings are printed.
  explicit Messages(bool quiet);

  /// From now on a printed line begins with the first of `names`, unless it begins with one of
  /// them already.
  void Attribute(std::vector<std::string> names) { names_ = std::move(names); }

  void Error(std::string_view text) const;
  void Warning(RemarkCode code, std::string_view text, std::uint64_t count = 1);
  void Note(RemarkCode code, std::string_view text, std::uint64_t count = 1);
  void Tell(Remark remark);
  /// Reports all remarks about one scene, each line beginning with `about`: the first ten of each
  /// code, then how many more there are.
  void TellAll(const std::string& about, Remarks remarks);
  /// The usage line that follows an error.
  void Usage(std::string_view line) const;
  /// A message box: "TITLE: TEXT", the text with its own line breaks.
  void Box(std::string_view title, std::string_view text) const;

  /// All notes and warnings so far, also those that were not printed.
  std::span<const Remark> Told() const { return told_; }

 private:
  void PrintRemark(RemarkKind kind, std::string_view text) const;
  void Print(std::string_view kind, std::string_view colour, std::string_view text) const;

  bool quiet_;
  bool coloured_;
  std::vector<std::string> names_;
  Remarks told_;
};

}  // namespace mapexport
