// Streams a JSON document for people to read: indented, with short lists on one line.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace mapexport {

/// Writes one document front to back through a small buffer. The caller calls in the order of the
/// document: Key before each value in an object, and a Close for each Open.
class JsonWriter {
 public:
  enum class Layout {
    kLines,   ///< each member or element on a line of its own
    kOneLine  ///< everything on one line
  };

  explicit JsonWriter(std::ostream& out) : out_(out) {}
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;
  ~JsonWriter() = default;

  void OpenObject() { Open('{', Layout::kLines); }
  void CloseObject() { Close('}'); }
  void OpenArray(Layout layout) { Open('[', layout); }
  void CloseArray() { Close(']'); }
  void Key(std::string_view name);

  /// Characters that a terminal may take for commands, and those that turn the writing direction,
  /// are written as escapes.
  void Text(std::string_view utf8);
  void Integer(std::int64_t number);
  /// A finite float, in the fewest digits that give it back when they are read as a double that is
  /// then rounded to float.
  void Float(float number);
  void Word(std::string_view word);  ///< true, false or null

  /// Ends the last line and hands everything to the stream.
  void Finish();

 private:
  struct Container {
    Layout layout;
    bool empty;
  };

  void Open(char bracket, Layout layout);
  void Close(char bracket);
  void Separate();
  void BreakLine();
  void Quote(std::string_view utf8);
  void Flush();

  std::ostream& out_;
  std::string buffer_;
  std::vector<Container> open_;
  bool afterKey_ = false;
};

}  // namespace mapexport
