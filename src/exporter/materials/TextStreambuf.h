// Reads a file of any platform as text.
#pragma once

#include <array>
#include <streambuf>

namespace mapexport {

/// Delivers the characters of another buffer without the carriage returns that stand directly
/// before a line feed. A carriage return anywhere else is text and stays.
class TextStreambuf : public std::streambuf {
 public:
  /// `source` must outlive this.
  explicit TextStreambuf(std::streambuf& source) : source_(source) {}

 private:
  int_type underflow() override;

  std::streambuf& source_;
  std::array<char, 4096> chunk_{};
};

}  // namespace mapexport
