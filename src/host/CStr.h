// The host's string.
#pragma once

#include <string>
#include <string_view>

namespace mapexport {

/// Text of the host: bytes (UTF-8 in practice) that end at the first NUL. Positions are byte
/// positions.
class CStr {
 public:
  CStr() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): the host's own conversion from C text.
  CStr(const char* text) : text_(text == nullptr ? "" : text) {}
  explicit CStr(std::string_view text) : text_(text.substr(0, text.find('\0'))) {}

  /// Number of bytes before the terminating NUL.
  int Length() const { return static_cast<int>(text_.size()); }
  /// The bytes, NUL-terminated; valid until the string changes.
  const char* data() const { return text_.c_str(); }
  std::string_view View() const { return text_; }

  /// Lower-cases the letters A to Z in place; every other byte stays.
  void toLower();
  /// Position of the first `c`, -1 when there is none.
  int first(char c) const;
  /// Position of the last `c`, -1 when there is none.
  int last(char c) const;
  /// The `count` bytes from `start` on, fewer when the text ends before; both are clamped to the
  /// text.
  CStr Substr(int start, int count) const;
  /// Removes everything from `start` on.
  void remove(int start);
  /// Removes `count` bytes from `start` on.
  void remove(int start, int count);

  friend bool operator==(const CStr&, const CStr&) = default;
  friend bool operator==(const CStr& a, const char* b) { return a.text_ == b; }

 private:
  std::string text_;
};

}  // namespace mapexport
