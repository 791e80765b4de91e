// Writes a JSON document front to back, with the line breaks that its writer asks for.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace mapexport {

class JsonStream {
 public:
  /// For Open: whether each member or element has a line, or all share one.
  static constexpr bool kOnLines = true;
  static constexpr bool kOnOneLine = false;

  /// `indent` is how many blanks each level adds at the start of a line; beyond 20 levels none, as
  /// the blanks of a deep document would outgrow all else.
  explicit JsonStream(std::ostream& out, std::size_t indent = 1) : out_(out), indent_(indent) {}
  JsonStream(const JsonStream&) = delete;
  JsonStream& operator=(const JsonStream&) = delete;

  /// Opens an object or array ("{", "[").
  void Open(char bracket, bool onLines);
  /// Closes the innermost one. With the outermost the document ends and is wholly handed on.
  void Close(char bracket);
  /// Begins a member of the innermost object; its value must follow.
  void Key(std::string_view key);

  // Values: elements of the innermost array, or the value of the key before.

  /// Characters that can't be seen are written as escapes, bytes that are not UTF-8 as U+FFFD.
  void Text(std::string_view text);
  /// The fewest digits that give `number` back, whether they are read as a float or as a double
  /// that is then rounded; a text, "NaN", "Infinity" or "-Infinity", when it is not finite.
  void Number(float number);
  void Number(std::integral auto number) {
    char digits[24];
    Word({digits, std::to_chars(digits, digits + sizeof digits, number).ptr});
  }
  void Bool(bool value) { Word(value ? "true" : "false"); }
  void Null() { Word("null"); }

 private:
  struct Level {
    bool onLines = false;
    bool empty = true;
  };

  void Word(std::string_view word) {
    Separate();
    buffer_ += word;
  }
  /// What must stand before the next member: comma, line break, indentation.
  void Separate();
  void BreakLine();
  void Quote(std::string_view text);
  void AppendEscape(char32_t value);
  void Flush();

  std::ostream& out_;
  const std::size_t indent_;
  std::string buffer_;
  std::vector<Level> open_;  ///< the innermost one last
  bool afterKey_ = false;
};

}  // namespace mapexport
