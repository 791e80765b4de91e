// Reads a file of any platform as text.
#pragma once

#include <array>
#include <streambuf>

namespace mapexport {

/// Delivers the characters of another buffer without each carriage return that directly precedes a
/// line feed. Other carriage returns are text and stay.
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
