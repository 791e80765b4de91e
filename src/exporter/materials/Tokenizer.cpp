#include "exporter/materials/Tokenizer.h"

#include <cstring>

namespace mapexport {

bool Tokenizer::ReadToken() {
  token_[0] = '\0';
  if (atEnd_) return false;
  for (;;) {
    const char c = *cursor_;
    const char following = c == '/' ? cursor_[1] : '\0';
    if (c == '\0' || following == '/') {
      if (!NextLine()) return false;
    } else if (following == '*') {
      cursor_ += 2;
      if (!SkipBlockComment()) return false;
    } else if (c == ' ' || c == '\t') {
      ++cursor_;
    } else if (c == '"') {
      ++cursor_;
      TakeToken("\"");
      return true;
    } else {
      TakeToken(" \t");
      return true;
    }
  }
}

/// Makes the next line the current one; false, and the input is exhausted, when there is none.
bool Tokenizer::NextLine() {
  if (input_.peek() == std::istream::traits_type::eof()) {
    atEnd_ = true;
    return false;
  }
  ReadLine();
  return true;
}

/// Makes the stream's next line, or piece of a long line, the current one. At the end of the stream
/// that is an empty line.
void Tokenizer::ReadLine() {
  input_.getline(line_.data(), kLineSize);
  // Failed without meeting the end: the buffer is full, and the line goes on with the next piece.
  if (input_.rdstate() == std::ios::failbit && input_.gcount() == kLineSize - 1) input_.clear();
  cursor_ = line_.data();
}

/// Moves behind the end of the comment that the cursor is in; false when the input ends before.
bool Tokenizer::SkipBlockComment() {
  for (;;) {
    if (const char* end = std::strstr(cursor_, "*/"); end != nullptr) {
      cursor_ = end + 2;
      return true;
    }
    if (!NextLine()) return false;
  }
}

/// Takes everything up to the first of `delimiters` or the end of the line as the token, and
/// consumes what ended it. This does not look ahead: after the last line it leaves an empty one,
/// which ends the input on the next call.
void Tokenizer::TakeToken(const char* delimiters) {
  const std::size_t length = std::strcspn(cursor_, delimiters);
  std::memcpy(token_.data(), cursor_, length);
  token_[length] = '\0';
  cursor_ += length;
  if (*cursor_ != '\0') {
    ++cursor_;
  } else {
    ReadLine();
  }
}

}  // namespace mapexport
