#include "cli/NearestName.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace mapexport {
namespace {

constexpr std::size_t kLettersPerEdit = 3;
// Nothing longer is near a name; it also bounds the time that a hostile argument takes.
constexpr std::size_t kLongest = 64;

/// How many letters were added, left out, changed, or swapped with their neighbour.
std::size_t Edits(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast;
  std::vector<std::size_t> last;
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast = std::move(last);
    last = row;
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({changed, last[j] + 1, row[j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
  }
  return row.back();
}

}  // namespace

std::string Suggestion(std::string_view given, std::span<const std::string> names) {
  const std::string_view letters =
      given.substr(std::min(given.find_first_not_of('-'), given.size()));
  if (letters.size() < 2 || given.size() > kLongest) return {};  // any letter is near "-h"
  const std::string* nearest = nullptr;
  std::size_t fewest = std::max<std::size_t>(letters.size() / kLettersPerEdit, 1) + 1;
  for (const std::string& name : names) {
    const std::size_t edits = name.starts_with(given) ? 1 : Edits(given, name);
    if (edits >= fewest) continue;
    nearest = &name;
    fewest = edits;
  }
  return nearest == nullptr ? std::string() : fmt::format("; did you mean \"{}\"?", *nearest);
}

}  // namespace mapexport
