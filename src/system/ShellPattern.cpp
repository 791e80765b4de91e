#include "system/ShellPattern.h"

#include <cstddef>
#include <optional>

#include "system/Utf8.h"

namespace mapexport {
namespace {

char32_t Take(std::string_view& text) {
  const CodePoint point = FirstCodePoint(text);
  text.remove_prefix(point.bytes);
  return point.value;
}

char32_t TakeEscaped(std::string_view& pattern) {
  if (pattern.size() > 1 && pattern.front() == '\\') pattern.remove_prefix(1);
  return Take(pattern);
}

/// Whether `c` is in the set at the beginning of `pattern`, which starts after its "["; removes the
/// set and its "]" from `pattern`. Nothing when there is no "]".
std::optional<bool> TakeSet(std::string_view& pattern, char32_t c) {
  std::string_view rest = pattern;
  const bool isInverted = rest.starts_with('!') || rest.starts_with('^');
  if (isInverted) rest.remove_prefix(1);
  bool isIn = false;
  for (bool isFirst = true; !rest.empty(); isFirst = false) {
    if (rest.front() == ']' && !isFirst) {
      pattern = rest.substr(1);
      return isIn != isInverted;
    }
    const char32_t low = TakeEscaped(rest);
    char32_t high = low;
    if (rest.size() > 1 && rest[0] == '-' && rest[1] != ']') {
      rest.remove_prefix(1);
      high = TakeEscaped(rest);
    }
    isIn = isIn || (low <= c && c <= high);
  }
  return std::nullopt;
}

/// Removes the element for one character, which is not "*", from the beginning of `pattern`.
/// Returns whether it matches `c`.
bool TakeOne(std::string_view& pattern, char32_t c) {
  if (pattern.front() == '?') {
    pattern.remove_prefix(1);
    return true;
  }
  if (pattern.front() == '[') {
    std::string_view behind = pattern.substr(1);
    if (const std::optional<bool> isIn = TakeSet(behind, c)) {
      pattern = behind;
      return *isIn;
    }
  }
  return TakeEscaped(pattern) == c;
}

}  // namespace

bool MatchesPattern(std::string_view text, std::string_view pattern) {
  // The pattern after the last "*", and where in the text it was last tried.
  std::optional<std::string_view> behindStar;
  std::string_view tried;
  while (true) {
    if (pattern.starts_with('*')) {
      pattern.remove_prefix(1);
      behindStar = pattern;
      tried = text;
      continue;
    }
    if (text.empty() && pattern.empty()) return true;
    if (!text.empty() && !pattern.empty() && TakeOne(pattern, Take(text))) continue;
    // The last star takes one more character; earlier stars never need to.
    if (!behindStar || tried.empty()) return false;
    Take(tried);
    text = tried;
    pattern = *behindStar;
  }
}

}  // namespace mapexport
