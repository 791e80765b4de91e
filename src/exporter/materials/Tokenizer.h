// Cuts a text stream into tokens.
#pragma once

#include <array>
#include <istream>

namespace mapexport {

/// Yields the words of a text one by one. Spaces and tabs separate words, // and block comments are
/// skipped, text between double quotes is one token. Literal form:
/// tests/reference/LiteralTokenizer.h.
///
/// A line of the text that is longer than 1,023 characters counts as several lines of 1,023 each,
/// so no token spans two of them. A NUL in a line hides the rest of it. Any other byte is text.
class Tokenizer {
 public:
  /// Binds the tokenizer to an open stream, which must outlive it and stays open. The stream
  /// delivers text: line ends are single line feeds (see TextStreambuf).
  explicit Tokenizer(std::istream& input) : input_(input) {}
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;

  /// Reads the next token; false when the input is exhausted, then and on every later call.
  ///
  /// After a token that ends its line the next line is read at once. So the stream is at its end
  /// after the last token of a text, or earlier: after the last token before a last line that has
  /// no line feed.
  bool ReadToken();

  /// The text of the last token, possibly empty between quotes; empty after ReadToken was false.
  /// NUL-terminated, at most 1,023 characters, valid until the next ReadToken.
  const char* Token() const { return token_.data(); }

 private:
  static constexpr std::size_t kLineSize = 1024;  ///< with the terminating NUL

  bool NextLine();
  void ReadLine();
  bool SkipBlockComment();
  void TakeToken(const char* delimiters);

  std::istream& input_;
  bool atEnd_ = false;                  ///< the stream has no more lines
  std::array<char, kLineSize> line_{};  ///< the current line, without its line end
  const char* cursor_ = line_.data();   ///< the next character of `line_` not yet looked at
  std::array<char, kLineSize> token_{};
};

}  // namespace mapexport
