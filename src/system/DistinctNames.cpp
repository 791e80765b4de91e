#include "system/DistinctNames.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

namespace mapexport {
namespace {

using PathNames = std::vector<std::filesystem::path>;

PathNames NamesOf(const std::filesystem::path& path) {
  return {path.begin(), path.end()};
}

/// The last names of a path, all if there are fewer than `count`.
std::string EndOfPath(const PathNames& names, std::size_t count) {
  std::filesystem::path end;
  for (const auto& name : std::span(names).last(std::min(count, names.size()))) end /= name;
  return end.string();
}

}  // namespace

std::array<std::string, 2> DistinctNames(const std::string& a, const std::string& b) {
  const PathNames ofA = NamesOf(a);
  const PathNames ofB = NamesOf(b);
  const auto differ = std::mismatch(ofA.rbegin(), ofA.rend(), ofB.rbegin(), ofB.rend()).first;
  const auto equal = static_cast<std::size_t>(differ - ofA.rbegin());
  const std::size_t count = ofA == ofB ? 1 : equal + 1;
  return {EndOfPath(ofA, count), EndOfPath(ofB, count)};
}

}  // namespace mapexport
