// Writes a JSON document as it comes, with the line breaks that its writer asks for.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace mapexport {

class JsonStream {
 public:
  explicit JsonStream(std::ostream& out) : out_(out) {}
  JsonStream(const JsonStream&) = delete;
  JsonStream& operator=(const JsonStream&) = delete;

  /// Opens an object or array ("{", "["). Its members stand each on its own line, or all on one.
  void Open(char bracket, bool onLines);
  /// Closes the innermost one. With the outermost the document ends and is wholly handed on.
  void Close(char bracket);
  /// Begins a member of the innermost object; its value must follow.
  void Key(std::string_view key);

  // Values: members of the innermost array, or the value of the key before.
  void Text(std::string_view text);
  void Number(float number);
  void Number(std::integral auto number) {
    Separate();
    char digits[24];
    Append({digits, std::to_chars(digits, digits + sizeof digits, number).ptr});
  }
  void Bool(bool value);

 private:
  static constexpr std::size_t kFlushBytes = 1 << 16;
  static constexpr int kMaxDepth = 16;

  struct Level {
    bool onLines = false;
    bool empty = true;
  };

  /// What must stand before the next member: comma, line break, indentation.
  void Separate();
  void BreakLine();
  void Append(std::string_view piece) {
    buffer_ += piece;
    if (buffer_.size() >= kFlushBytes) Flush();
  }
  void AppendText(std::string_view text);
  void AppendEscape(std::uint32_t value);
  void Flush();

  std::ostream& out_;
  std::string buffer_;
  Level levels_[kMaxDepth];
  int depth_ = 0;  ///< levels_[depth_] is the innermost; level 0 is the document
  bool afterKey_ = false;
};

}  // namespace mapexport
