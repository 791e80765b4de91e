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

  static constexpr std::size_t kUnknown = static_cast<std::size_t>(-1);

  std::string_view rest_;
  std::size_t toFeed_ = kUnknown;  // how far it is to the next line feed, or to the end
  std::string_view statement_;
  std::string joined_;
  std::size_t line_ = 0;
  std::size_t linesTaken_ = 0;
};

inline bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}

inline void DropBlanks(std::string_view& text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
}

/// Takes the first word, which ends before a blank or a tab, and the blanks around it from `rest`;
/// empty when there is none.
inline std::string_view TakeWord(std::string_view& rest) {
  DropBlanks(rest);
  std::size_t size = 0;
  while (size < rest.size() && !IsBlank(rest[size])) ++size;
  const std::string_view word = rest.substr(0, size);
  rest.remove_prefix(size);
  DropBlanks(rest);
  return word;
}

}  // namespace mapexport
