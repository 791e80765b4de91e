#include "output/DepFile.h"

#include <algorithm>
#include <set>
#include <string_view>

#include <fmt/format.h>

#include "system/RunError.h"

namespace mapexport {
namespace {

// Characters that make or ninja can't escape: they end a name, begin a recipe, a quote or an
// assignment, or are wildcards. (Make needs a backslash before a wildcard, ninja reads it as part
// of the name.)
constexpr std::string_view kNever = "\"&'*;<=>?[^`|";

/// Whether make reads the name as a special target, or as the start of a definition.
bool IsWordOfMake(std::string_view name, bool isTarget) {
  if (!isTarget && (name == "define" || name == "undefine")) return true;
  return name.size() > 1 && name.front() == '.' && std::ranges::all_of(name.substr(1), [](char c) {
           return (c >= 'A' && c <= 'Z') || c == '_';
         });
}

/// The name as make sees it, without a leading "./".
std::string_view WithoutThisFolder(std::string_view path) {
  while (path.starts_with("./")) {
    path.remove_prefix(std::min(path.find_first_not_of('/', 1), path.size()));
  }
  return path;
}

/// The part of `path` that make and ninja would not both read back unchanged; empty for none.
std::string_view Obstacle(std::string_view path, bool isTarget) {
  for (std::size_t i = 0; i < path.size(); ++i) {
    const char c = path[i];
    const bool isControl = static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    // "%" turns a target into a pattern.
    if (isControl || kNever.find(c) != std::string_view::npos || (isTarget && c == '%')) {
      return path.substr(i, 1);
    }
    // Make halves the backslashes before these, ninja does not.
    if (c == '\\' && i + 1 < path.size() && std::string_view("#:$").find(path[i + 1]) < 3) {
      return path.substr(i, 2);
    }
  }
  const std::string_view name = WithoutThisFolder(path);
  // Make replaces it by a home folder.
  if (name.starts_with('~')) return name.substr(0, 1);
  if (IsWordOfMake(name, isTarget)) return name;
  // ")" closes a list of archive members, whose "(" may be part of an earlier name. The others
  // would escape or swallow what follows.
  const std::string_view neverLast = isTarget ? "\\)" : "\\) :";
  if (neverLast.find(path.back()) != std::string_view::npos) return path.substr(path.size() - 1);
  return {};
}

std::string Escaped(const std::string& path, bool isTarget) {
  if (path.empty()) throw RunError("a --depfile cannot hold an empty file name");
  const std::string_view obstacle = Obstacle(path, isTarget);
  if (!obstacle.empty()) {
    throw RunError(
        fmt::format("{}: a --depfile cannot hold this name: make and ninja have no common form for "
                    "\"{}\" there",
                    path, obstacle));
  }
  std::string escaped;
  std::size_t backslashes = 0;  // directly before the character
  for (const char c : path) {
    if (c == '$') escaped += '$';
    if (c == ' ' || c == '#' || c == ':') {
      // A backslash is literal unless such a character follows.
      escaped.append(backslashes + 1, '\\');
    }
    escaped += c;
    backslashes = c == '\\' ? backslashes + 1 : 0;
  }
  return escaped;
}

}  // namespace

std::string DepFileText(const std::string& output, std::span<const std::string> files) {
  std::string text = Escaped(output, true) + ':';
  std::set<std::string_view> known;
  for (const std::string& file : files) {
    if (!known.insert(file).second) continue;
    text += fmt::format("{}{}", known.size() == 1 ? " " : " \\\n  ", Escaped(file, false));
  }
  return text + '\n';
}

}  // namespace mapexport
