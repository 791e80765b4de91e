// The string that carries the output path.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace mapexport {

/// Owns its text, NUL-terminated; the empty string has no buffer.
class PathString {
 public:
  PathString() = default;
  explicit PathString(std::string_view text);
  PathString(const PathString& other) : PathString(other.View()) {}
  PathString(PathString&& other) noexcept
      : buffer_(std::move(other.buffer_)), capacity_(std::exchange(other.capacity_, 0)) {}
  PathString& operator=(PathString other) noexcept {
    std::swap(buffer_, other.buffer_);
    std::swap(capacity_, other.capacity_);
    return *this;
  }
  ~PathString() = default;

  std::size_t Length() const { return capacity_ == 0 ? 0 : capacity_ - 1; }
  /// The text, NUL-terminated; never null.
  const char* Text() const { return buffer_ ? buffer_.get() : ""; }

  /// The text after the last "." of the whole string; empty when there is none or nothing follows
  /// it. A "." in a folder's name counts.
  PathString Extension() const;
  /// Lower-cases the letters A to Z in place.
  void LowerCase();

  friend bool operator==(const PathString& a, std::string_view b) { return a.View() == b; }
  friend PathString operator+(const PathString& a, std::string_view b);

 private:
  std::string_view View() const { return {Text(), Length()}; }

  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;  ///< bytes of the buffer, the NUL included
};

}  // namespace mapexport
