// What the program tells the person on standard error.
#pragma once

#include <string_view>

namespace mapexport {

/// Writes lines to standard error, each with one newline at its end; control characters in them are
/// shown as escapes. Coloured only on a terminal, and never with NO_COLOR set or TERM=dumb. A
/// standard error that can't be written is not told anywhere.
class Messages {
 public:
  /// With `quiet` only errors and warnings are printed.
  explicit Messages(bool quiet);

  void Error(std::string_view text) const;
  void Warning(std::string_view text) const;
  void Note(std::string_view text) const;
  /// The usage line that follows an error.
  void Usage(std::string_view line) const;
  /// A message box: "TITLE: TEXT", the text with its own line breaks.
  void Box(std::string_view title, std::string_view text) const;

 private:
  void Print(std::string_view kind, std::string_view colour, std::string_view text) const;

  bool quiet_;
  bool coloured_;
};

}  // namespace mapexport
