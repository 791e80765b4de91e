// Walks through texts of one statement per line, such as OBJ and MTL files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mapexport {

/// Walks through the statements of a text. Lines end with LF, CR or CRLF; a backslash at the end of
/// a line joins the next one to it. Blank lines and comments are skipped.
class StatementLines {
 public:
  /// `text` must outlive this object.
  explicit StatementLines(std::string_view text) : rest_(text) {}

  /// Goes to the next statement; false at the end of the text.
  bool Next();
  /// The current statement without blanks at its ends; valid until Next() is called again.
  std::string_view Statement() const { return statement_; }
  /// The number of its first line, from 1.
  std::size_t Line() const { return line_; }

 private:
  std::string_view TakeLine();

  std::string_view rest_;
  std::string_view statement_;
  std::string joined_;
  std::size_t line_ = 0;
  std::size_t linesTaken_ = 0;
};

/// Takes the first word, which ends before a blank or a tab, from `rest`; empty when there is none.
std::string_view TakeWord(std::string_view& rest);

}  // namespace mapexport
