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
/// shown as escapes. Coloured only on a terminal, and never with NO_COLOR set or TERM=dumb. When
/// MessagesAreJson, each is one JSON object instead, as docs/report.md describes.
class Messages {
 public:
  /// With `quiet` only errors and warnings are printed. `scene` is the path of the scene that all
  /// messages are about; empty for none.
  explicit Messages(bool quiet, std::string scene = {});

  /// From now on a printed line begins with the first of `names`, unless it begins with one of
  /// them already.
  void Attribute(std::vector<std::string> names) { names_ = std::move(names); }

  /// `code` is "failed" or "wrong-usage".
  void Error(std::string_view code, std::string_view text) const;
  void Warning(RemarkCode code, std::string_view text, std::uint64_t count = 1);
  void Note(RemarkCode code, std::string_view text, std::uint64_t count = 1);
  void Tell(Remark remark);
  /// Reports all remarks about one scene, each line beginning with `about`: the first ten of each
  /// code, then how many more there are; in JSON all.
  void TellAll(const std::string& about, Remarks remarks);
  /// The usage line that follows an error.
  void Usage(std::string_view line) const;
  /// A message box: "TITLE: TEXT", the text with its own line breaks.
  void Box(std::string_view title, std::string_view text) const;

  /// All notes and warnings so far, also those that were not printed.
  std::span<const Remark> Told() const { return told_; }
  /// The warnings among them for a window, a blank line before each: the first eight, then how many
  /// more there are.
  std::string WarningParagraphs() const;

 private:
  void PrintRemark(const Remark& remark) const;
  void Print(std::string_view severity, std::string_view colour, std::string_view text) const;
  /// `remark` may be null.
  void PrintJson(std::string_view severity, std::string_view code, std::string_view text,
                 const Remark* remark = nullptr) const;

  bool quiet_;
  std::string scene_;
  bool coloured_;
  std::vector<std::string> names_;
  Remarks told_;
};

}  // namespace mapexport
