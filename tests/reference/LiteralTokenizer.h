// The tokenizer by its definition: one character after the other over a whole text.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace mapexport {

/// Model of a text stream and of the tokenizer that reads it.
class LiteralTokenizer {
 public:
  explicit LiteralTokenizer(std::string text) : text_(std::move(text)) {
    // Text mode: a carriage return before a line feed is never seen.
    for (std::size_t i = 0; i + 1 < text_.size(); ++i) {
      if (text_[i] == '\r' && text_[i + 1] == '\n') text_.erase(i, 1);
    }
  }

  /// Whether the stream is neither at its end nor failed.
  bool StreamGood() const { return good_; }
  const std::string& Token() const { return token_; }

  bool ReadToken() {
    token_.clear();
    if (atEnd_) return false;
    for (;;) {
      const char c = Take();
      if (c == '\0' || (c == '/' && Peek() == '/')) {
        if (LookAheadFindsEnd()) return Exhausted();
        ReadLine();
      } else if (c == '/' && Peek() == '*') {
        Take();
        for (char inside = Take(); inside != '*' || Peek() != '/'; inside = Take()) {
          if (inside != '\0') continue;
          if (LookAheadFindsEnd()) return Exhausted();
          ReadLine();
        }
        Take();
      } else if (c == '"') {
        while (Peek() != '"' && Peek() != '\0') token_ += Take();
        if (Take() == '\0') ReadLine();
        return true;
      } else if (c != ' ' && c != '\t') {
        token_ = c;
        while (Peek() != ' ' && Peek() != '\t' && Peek() != '\0') token_ += Take();
        if (Take() == '\0') ReadLine();
        return true;
      }
    }
  }

 private:
  char Peek() const { return cursor_ < line_.size() ? line_[cursor_] : '\0'; }
  char Take() {
    const char c = Peek();
    ++cursor_;
    return c;
  }
  bool Exhausted() {
    atEnd_ = true;
    return false;
  }
  bool LookAheadFindsEnd() {
    if (next_ == text_.size()) good_ = false;
    return !good_;
  }
  void ReadLine() {
    line_.clear();
    cursor_ = 0;
    while (good_) {
      if (next_ == text_.size()) {
        good_ = false;
      } else if (text_[next_] == '\n') {
        ++next_;
        return;
      } else if (line_.size() == 1023) {
        return;
      } else {
        line_ += text_[next_++];
      }
    }
  }

  std::string text_;
  std::size_t next_ = 0;  ///< the stream's next character
  bool good_ = true;
  std::string line_;
  std::size_t cursor_ = 0;
  std::string token_;
  bool atEnd_ = false;
};

}  // namespace mapexport
