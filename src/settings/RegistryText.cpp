#include "settings/RegistryText.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include <fmt/format.h>

#include "settings/SettingsError.h"
#include "system/Ascii.h"
#include "system/Utf8.h"

namespace mapexport {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";

[[noreturn]] void FailAt(std::size_t line, std::string_view what) {
  throw SettingsError(fmt::format("line {}: {}", line, what));
}

void CheckBytes(std::string_view bytes) {
  const std::size_t bad = std::min(bytes.find('\0'), FindInvalidUtf8(bytes));
  if (bad == std::string_view::npos) return;
  const auto before = bytes.substr(0, bad);
  const auto line = static_cast<std::size_t>(std::ranges::count(before, '\n')) + 1;
  FailAt(line, bytes[bad] == '\0' ? "the line holds a NUL byte" : "the line is not UTF-8");
}

/// Reads line by line; `pos_` is in the current line or after it.
class Parser {
 public:
  explicit Parser(RegistryText& text) : text_(text), bytes_(text.bytes) {}

  void Run() {
    if (bytes_.starts_with(kByteOrderMark)) next_ = kByteOrderMark.size();
    if (!NextLine() || !Take("REGEDIT4") || !AtRemark()) {
      FailAt(1, "the first line of a settings file is REGEDIT4");
    }
    text_.lineEnd = bytes_.substr(end_, next_ - end_) == "\r\n" ? "\r\n" : "\n";
    while (NextLine()) ParseLine();
  }

 private:
  [[noreturn]] void Fail(std::string_view what) const { FailAt(line_, what); }

  /// Goes to the next line; false when there is none.
  bool NextLine() {
    if (next_ == bytes_.size()) return false;
    ++line_;
    pos_ = next_;
    end_ = std::min(bytes_.find('\n', pos_), bytes_.size());
    next_ = std::min(end_ + 1, bytes_.size());
    if (end_ < next_ && end_ > pos_ && bytes_[end_ - 1] == '\r') --end_;
    return true;
  }

  bool AtEnd() const { return pos_ == end_; }

  void SkipBlanks() {
    while (!AtEnd() && (bytes_[pos_] == ' ' || bytes_[pos_] == '\t')) ++pos_;
  }

  /// Skips `word` if it comes next.
  bool Take(std::string_view word) {
    if (!bytes_.substr(pos_, end_ - pos_).starts_with(word)) return false;
    pos_ += word.size();
    return true;
  }

  /// Whether only blanks and a comment are left of the line.
  bool AtRemark() {
    SkipBlanks();
    return AtEnd() || bytes_[pos_] == ';';
  }

  void ParseLine() {
    if (AtRemark()) return;
    if (Take("[")) return ParseKey();
    if (bytes_[pos_] == '"' || bytes_[pos_] == '@') return ParseValue();
    Fail("neither a [key] nor a value nor a ; comment");
  }

  void ParseKey() {
    const bool takenAway = Take("-");
    const std::size_t begin = pos_;
    std::size_t close = 0;
    do {  // a "]" inside a name is followed by more of it
      close = bytes_.find(']', pos_);
      if (close >= end_) Fail("the key's line does not end in ]");
      pos_ = close + 1;
    } while (!AtRemark());
    if (close == begin) Fail("the key has no name");
    const std::string name = FoldRegistryName(bytes_.substr(begin, close - begin));
    if (takenAway) {
      TakeAway(name);
      key_ = &noKey_;
    } else {
      key_ = &text_.keys[name];
      key_->insertAt = next_;
    }
  }

  void TakeAway(const std::string& name) {
    text_.keys.erase(name);
    const auto below = text_.keys.lower_bound(name + '\\');
    text_.keys.erase(below, text_.keys.lower_bound(name + static_cast<char>('\\' + 1)));
  }

  void ParseValue() {
    if (key_ == nullptr) Fail("a value precedes the first [key]");
    const std::string name = Take("@") ? std::string() : ParseQuoted();
    SkipBlanks();
    if (!Take("=")) Fail("the value's name is not followed by =");
    SkipBlanks();
    RegistryText::Entry entry;
    entry.begin = pos_;
    entry.value = ParseData();
    entry.end = pos_;
    if (!AtRemark()) Fail("something follows the value on its line");
    key_->entries.insert_or_assign(FoldRegistryName(name), std::move(entry));
    key_->insertAt = next_;
  }

  std::optional<RegistryValue> ParseData() {
    if (Take("-")) return std::nullopt;
    if (!AtEnd() && bytes_[pos_] == '"') return ParseQuoted();
    if (Take("dword:")) return ParseHexNumber();
    if (Take("hex:")) {
      ParseHexBytes();
      return std::nullopt;
    }
    if (Take("hex(")) {
      const std::uint32_t kind = ParseHexNumber();
      if (!Take("):")) Fail("hex(KIND is not followed by ):");
      std::string bytes = ParseHexBytes();
      if (kind != 1) return std::nullopt;
      return bytes.substr(0, bytes.find('\0'));
    }
    Fail("the value is none of \"text\", dword:, hex:, hex(KIND): and -");
  }

  /// The text between the quotes that come next.
  std::string ParseQuoted() {
    std::string text;
    for (++pos_; !AtEnd(); ++pos_) {
      if (bytes_[pos_] == '"') {
        ++pos_;
        return text;
      }
      if (bytes_[pos_] == '\\') {
        ++pos_;
        if (AtEnd() || (bytes_[pos_] != '\\' && bytes_[pos_] != '"')) {
          Fail("in quotes a backslash is written \\\\ and a quote \\\"");
        }
      }
      text += bytes_[pos_];
    }
    Fail("the closing quote is missing");
  }

  std::string_view TakeHexDigits() {
    const std::size_t begin = pos_;
    pos_ = std::min(bytes_.find_first_not_of(kHexDigits, begin), bytes_.size());
    return bytes_.substr(begin, pos_ - begin);
  }

  std::uint32_t ParseHexNumber() {
    const std::string_view digits = TakeHexDigits();
    if (digits.empty() || digits.size() > 8) Fail("a number needs 1 to 8 hexadecimal digits");
    std::uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    return number;
  }

  /// Bytes with commas between them, possibly none, over as many lines as end in a backslash.
  std::string ParseHexBytes() {
    std::string bytes;
    while (true) {
      SkipBlanks();
      if (Take("\\")) {
        if (!AtRemark()) Fail("something follows the \\ that ends the line");
        if (!NextLine()) Fail("the line ends in \\ and no other follows");
        continue;
      }
      const std::string_view digits = TakeHexDigits();
      if (digits.empty() && bytes.empty()) return bytes;
      if (digits.empty() || digits.size() > 2) Fail("a byte needs 1 or 2 hexadecimal digits");
      unsigned byte = 0;
      std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
      bytes += static_cast<char>(byte);
      const std::size_t behind = pos_;
      SkipBlanks();
      if (!Take(",")) {
        pos_ = behind;
        return bytes;
      }
    }
  }

  RegistryText& text_;
  std::string_view bytes_;
  std::size_t line_ = 0;  ///< number of the current line, from 1
  std::size_t pos_ = 0;
  std::size_t end_ = 0;               ///< behind the line's last byte, its line end left out
  std::size_t next_ = 0;              ///< start of the next line
  RegistryText::Key* key_ = nullptr;  ///< the key of the values that follow
  RegistryText::Key noKey_;           ///< discards the values below a deleted key
};

}  // namespace

const RegistryValue* RegistryText::Find(std::string_view key, std::string_view name) const {
  const auto foundKey = keys.find(FoldRegistryName(key));
  if (foundKey == keys.end()) return nullptr;
  const auto& entries = foundKey->second.entries;
  const auto entry = entries.find(FoldRegistryName(name));
  return entry == entries.end() || !entry->second.value ? nullptr : &*entry->second.value;
}

RegistryText ParseRegistryText(std::string bytes) {
  CheckBytes(bytes);
  RegistryText text;
  text.bytes = std::move(bytes);
  if (!text.bytes.empty()) Parser(text).Run();
  return text;
}

std::string FoldRegistryName(std::string_view name) {
  return LowerCase(name);
}

bool IsRegistryName(std::string_view name) {
  return name.find_first_of(std::string_view("\0\r\n", 3)) == std::string_view::npos &&
         FindInvalidUtf8(name) == std::string_view::npos;
}

}  // namespace mapexport
