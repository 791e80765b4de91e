// Text of foreign files as the host keeps it.
#include "importer/text/HostText.h"

#include <array>
#include <cstddef>
#include <optional>

namespace mapexport {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

unsigned ByteAt(std::string_view text, std::size_t i) {
  return static_cast<unsigned char>(text[i]);
}

/// Length of the well-formed character that begins at `i`, 0 when none does. Overlong forms,
/// surrogates and what lies past U+10FFFF are not well-formed.
std::size_t CharacterLength(std::string_view text, std::size_t i) {
  const unsigned first = ByteAt(text, i);
  if (first < 0x80) return 1;
  const std::size_t length = first < 0xC2   ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  if (length == 0 || text.size() - i < length) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((ByteAt(text, i + k) & 0xC0) != 0x80) return 0;
  }
  const unsigned second = ByteAt(text, i + 1);
  if (first == 0xE0 && second < 0xA0) return 0;
  if (first == 0xED && second >= 0xA0) return 0;
  if (first == 0xF0 && second < 0x90) return 0;
  if (first == 0xF4 && second >= 0x90) return 0;
  return length;
}

struct Entity {
  std::string_view name;
  char character;
};

constexpr std::array<Entity, 6> kEntities{{{"&cr;", '\r'},
                                           {"&lf;", '\n'},
                                           {"&quot;", '"'},
                                           {"&amp;", '&'},
                                           {"&lt;", '<'},
                                           {"&gt;", '>'}}};

std::optional<unsigned> HexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  return std::nullopt;
}

}  // namespace

std::string ValidUtf8(std::string_view bytes) {
  bytes = bytes.substr(0, bytes.find('\0'));
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    const std::size_t length = CharacterLength(bytes, i);
    text += length == 0 ? kReplacement : bytes.substr(i, length);
    i += length == 0 ? 1 : length;
  }
  return text;
}

std::string DecodeEntities(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  while (!text.empty()) {
    std::size_t used = 0;
    for (const Entity& entity : kEntities) {
      if (text.starts_with(entity.name)) {
        decoded += entity.character;
        used = entity.name.size();
        break;
      }
    }
    if (used == 0) {
      decoded += text.front();
      used = 1;
    }
    text.remove_prefix(used);
  }
  return decoded;
}

std::string DecodePercents(std::string_view uri) {
  std::string decoded;
  decoded.reserve(uri.size());
  for (std::size_t i = 0; i < uri.size(); ++i) {
    if (uri[i] == '%' && i + 2 < uri.size()) {
      const std::optional<unsigned> high = HexDigit(uri[i + 1]);
      const std::optional<unsigned> low = HexDigit(uri[i + 2]);
      if (high && low) {
        decoded += static_cast<char>(*high * 16 + *low);
        i += 2;
        continue;
      }
    }
    decoded += uri[i];
  }
  return decoded;
}

std::string FirstLine(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  text.remove_prefix(begin);
  text = text.substr(0, text.find_first_of("\r\n"));
  text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
  std::string line = ValidUtf8(text);
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return line;
}

}  // namespace mapexport
