#include "importer/text/HostText.h"

#include <array>
#include <cstddef>
#include <optional>

#include "system/Ascii.h"
#include "system/Utf8.h"

namespace mapexport {
namespace {

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

}  // namespace

std::string ValidUtf8(std::string_view bytes) {
  bytes = bytes.substr(0, bytes.find('\0'));
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const CodePoint point = FirstCodePoint(bytes);
    text += point.valid ? bytes.substr(0, point.bytes) : "\uFFFD";
    bytes.remove_prefix(point.bytes);
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
  BlankControlCodes(line);
  return line;
}

std::uint64_t BlankControlCodes(std::string& text) {
  std::uint64_t count = 0;
  std::size_t kept = 0;
  for (std::size_t at = 0; at < text.size();) {
    const CodePoint point = FirstCodePoint(std::string_view(text).substr(at));
    if (point.valid && IsControlCode(point.value)) {
      text[kept++] = ' ';
      ++count;
    } else {
      for (std::size_t i = 0; i < point.bytes; ++i) text[kept++] = text[at + i];
    }
    at += point.bytes;
  }
  text.resize(kept);
  return count;
}

}  // namespace mapexport
