#include "app/DepFile.h"

#include <set>
#include <string_view>

#include <fmt/format.h>

#include "app/RunError.h"

namespace mapexport {
namespace {

// For make these end or change the rule, and nothing takes that from them: ";" begins a recipe, "="
// makes an assignment of target and first file, "%" in a target makes a pattern.
constexpr std::string_view kNever = "\n\r;";
constexpr std::string_view kNotInTarget = "\n\r;=%";
constexpr std::string_view kNotInFirstFile = "\n\r;=";

// These need a backslash; the last ones are wildcards, which make would look up.
constexpr std::string_view kSpecialInTarget = " \t#:*?[]";
constexpr std::string_view kSpecial = " \t#:*?[]|";

std::string Escaped(const std::string& path, std::string_view impossible,
                    std::string_view special) {
  const std::size_t bad = path.find_first_of(impossible);
  if (bad != std::string::npos) {
    throw RunError(fmt::format("{}: cannot stand in a --depfile: make has no form for \"{}\" there",
                               path, path[bad]));
  }
  // A leading "~" would be somebody's home.
  std::string escaped = path.starts_with('~') ? "./" : "";
  std::size_t backslashes = 0;  // that stand right before
  for (const char c : path) {
    if (c == '$') escaped += '$';
    if (special.find(c) != std::string_view::npos) {
      // Backslashes mean themselves but where a special character follows.
      escaped.append(backslashes + 1, '\\');
    }
    escaped += c;
    backslashes = c == '\\' ? backslashes + 1 : 0;
  }
  return escaped;
}

}  // namespace

std::string DepFileText(const std::string& output, std::span<const std::string> files) {
  std::string text = Escaped(output, kNotInTarget, kSpecialInTarget) + ':';
  std::set<std::string_view> known;
  for (const std::string& file : files) {
    if (!known.insert(file).second) continue;
    text += fmt::format("{}{}", known.size() == 1 ? " " : " \\\n  ",
                        Escaped(file, known.size() == 1 ? kNotInFirstFile : kNever, kSpecial));
  }
  return text + '\n';
}

}  // namespace mapexport
