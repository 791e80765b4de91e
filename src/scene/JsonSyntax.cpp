// The JSON grammar, walked with an explicit stack.
#include "scene/JsonSyntax.h"

#include <string>

#include "system/Ascii.h"
#include "system/Utf8.h"

namespace mapexport {

namespace {

// Every step returns false, with `defect` set and `position` at the place, when the text is wrong.
class Walker {
 public:
  explicit Walker(std::string_view text) : text_(text) {}

  bool Value();
  bool NothingMore();
  bool MoreOfContainer();
  bool Name();
  JsonSyntax Result() const { return {defect_, position_}; }

 private:
  bool AtEnd() const { return position_ == text_.size(); }
  // NUL at the end; as a byte of the text it is allowed nowhere either.
  char Peek() const { return AtEnd() ? '\0' : text_[position_]; }
  bool Fail(const char* defect) {
    defect_ = AtEnd() ? "the text ends too early" : defect;
    return false;
  }
  void SkipSpace();
  bool Scalar();
  bool String();
  bool Escape();
  bool Number();
  bool Digits();
  bool Word(std::string_view word);

  std::string_view text_;
  std::size_t position_ = 0;
  const char* defect_ = nullptr;
};

void Walker::SkipSpace() {
  while (!AtEnd() && (Peek() == ' ' || Peek() == '\n' || Peek() == '\r' || Peek() == '\t')) {
    ++position_;
  }
}

bool Walker::Value() {
  std::string awaited;  // the closing brackets of all open arrays and objects
  while (true) {
    SkipSpace();
    if (Peek() == '{' || Peek() == '[') {
      awaited += Peek() == '{' ? '}' : ']';
      ++position_;
      SkipSpace();
      if (Peek() != awaited.back()) {
        if (awaited.back() == '}' && !Name()) return false;
        continue;
      }
    } else if (!Scalar()) {
      return false;
    }
    // A value has ended, or the array or object that was just opened is empty.
    while (true) {
      if (awaited.empty()) return true;
      SkipSpace();
      if (Peek() == ',') {
        ++position_;
        if (awaited.back() == '}' && !Name()) return false;
        break;
      }
      if (Peek() != awaited.back()) {
        return Fail(awaited.back() == '}' ? "\",\" or \"}\" was expected"
                                          : "\",\" or \"]\" was expected");
      }
      ++position_;
      awaited.pop_back();
    }
  }
}

bool Walker::NothingMore() {
  SkipSpace();
  return AtEnd() || Fail("nothing may follow the document");
}

bool Walker::MoreOfContainer() {
  const std::size_t end = position_;
  SkipSpace();
  if (std::string_view(",]}").find(Peek()) == std::string_view::npos) {
    return Fail("\",\" or a closing bracket was expected");
  }
  position_ = end;
  return true;
}

bool Walker::Name() {
  SkipSpace();
  if (Peek() != '"') return Fail("a member's name in quotes was expected");
  if (!String()) return false;
  SkipSpace();
  if (Peek() != ':') return Fail("\":\" was expected");
  ++position_;
  return true;
}

bool Walker::Scalar() {
  switch (Peek()) {
    case '"':
      return String();
    case 't':
      return Word("true");
    case 'f':
      return Word("false");
    case 'n':
      return Word("null");
    default:
      if (Peek() == '-' || IsDigit(Peek())) return Number();
      return Fail("a value was expected");
  }
}

bool Walker::Word(std::string_view word) {
  // A longer word is caught by what must follow the value.
  for (const char c : word) {
    if (Peek() != c) return Fail("a value was expected");
    ++position_;
  }
  return true;
}

bool Walker::Digits() {
  if (!IsDigit(Peek())) return Fail("a digit was expected");
  while (IsDigit(Peek())) ++position_;
  return true;
}

bool Walker::Number() {
  if (Peek() == '-') ++position_;
  if (Peek() == '0') {
    ++position_;
    if (IsDigit(Peek())) return Fail("a number may not start with 0 and another digit");
  } else if (!Digits()) {
    return false;
  }
  if (Peek() == '.') {
    ++position_;
    if (!Digits()) return false;
  }
  if (Peek() == 'e' || Peek() == 'E') {
    ++position_;
    if (Peek() == '+' || Peek() == '-') ++position_;
    if (!Digits()) return false;
  }
  return true;
}

bool Walker::String() {
  ++position_;
  while (Peek() != '"') {
    const auto byte = static_cast<unsigned char>(Peek());
    if (byte < 0x20) return Fail("a control character in text must be written as an escape");
    if (byte == '\\') {
      if (!Escape()) return false;
    } else {
      const CodePoint point = FirstCodePoint(text_.substr(position_));
      if (!point.valid) return Fail("the text is not valid UTF-8");
      position_ += point.bytes;
    }
  }
  ++position_;
  return true;
}

bool Walker::Escape() {
  ++position_;
  if (Peek() == 'u') {
    ++position_;
    for (int i = 0; i < 4; ++i, ++position_) {
      if (!HexDigit(Peek())) return Fail("four hexadecimal digits were expected");
    }
    return true;
  }
  if (std::string_view("\"\\/bfnrt").find(Peek()) == std::string_view::npos) {
    return Fail("there is no such escape");
  }
  ++position_;
  return true;
}

}  // namespace

JsonSyntax CheckJsonDocument(std::string_view text) {
  Walker walker(text);
  if (walker.Value()) walker.NothingMore();
  return walker.Result();
}

JsonSyntax CheckJsonValue(std::string_view text) {
  Walker walker(text);
  if (walker.Value()) walker.MoreOfContainer();
  return walker.Result();
}

JsonSyntax CheckJsonName(std::string_view text) {
  Walker walker(text);
  walker.Name();
  return walker.Result();
}

std::string_view JsonKind(char first) {
  switch (first) {
    case '{':
      return "an object";
    case '[':
      return "an array";
    case '"':
      return "text";
    case 'n':
      return "null";
    case 't':
    case 'f':
      return "a bool";
    default:
      return "a number";
  }
}

}  // namespace mapexport
