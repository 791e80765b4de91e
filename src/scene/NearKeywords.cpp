#include "scene/NearKeywords.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "scene/UserProperties.h"
#include "system/Ascii.h"
#include "system/FaceKeywords.h"

namespace mapexport {
namespace {

/// Longer words can't be near: the longest keyword, an added letter, and some room for blanks.
constexpr std::size_t kLongestWord = 40;

/// `word` without blanks, in small letters.
std::string Folded(std::string_view word) {
  std::string folded = LowerCase(word);
  std::erase(folded, ' ');
  return folded;
}

bool IsOneEditAway(std::string_view a, std::string_view b) {
  if (a.size() > b.size()) std::swap(a, b);
  if (b.size() - a.size() > 1) return false;
  const auto [inA, inB] = std::ranges::mismatch(a, b);
  const auto same = static_cast<std::size_t>(inA - a.begin());
  a.remove_prefix(same);
  b.remove_prefix(same);
  if (a.size() < b.size()) return a == b.substr(1);
  if (a.empty() || a.substr(1) == b.substr(1)) return true;
  return a.size() > 1 && a[0] == b[1] && a[1] == b[0] && a.substr(2) == b.substr(2);
}

/// Whether `word` is nothing but two or more keywords with blanks or punctuation between them.
bool IsSeveralKeywords(std::string_view word) {
  constexpr std::string_view kBetween = " ,;|/+&";
  std::size_t keywords = 0;
  while (true) {
    word.remove_prefix(std::min(word.find_first_not_of(kBetween), word.size()));
    if (word.empty()) return keywords > 1;
    const std::string_view part = word.substr(0, word.find_first_of(kBetween));
    if (!IsKeyword(part)) return false;
    ++keywords;
    word.remove_prefix(part.size());
  }
}

template <class Visitor>
void VisitWordsOfNodes(const SceneNode& node, const Visitor& visit) {
  VisitWords(node.userProperties, [&](std::string_view word) { visit(node, word); });
  for (const SceneNode& child : node.children) VisitWordsOfNodes(child, visit);
}

}  // namespace

bool IsKeyword(std::string_view word) {
  return std::ranges::find(kFaceKeywords, word) != kFaceKeywords.end();
}

std::string_view NearestKeyword(std::string_view word) {
  if (word.empty() || word.size() > kLongestWord || IsKeyword(word)) return {};
  const std::string folded = Folded(word);
  for (const std::string_view keyword : kFaceKeywords) {
    if (folded == keyword) return keyword;
  }
  for (const std::string_view keyword : kFaceKeywords) {
    if (IsOneEditAway(folded, keyword)) return keyword;
  }
  return {};
}

std::vector<NearKeyword> FindNearKeywords(const Scene& scene) {
  std::vector<NearKeyword> found;
  std::unordered_map<std::string, std::size_t> placeOf;
  VisitWordsOfNodes(scene.root, [&](const SceneNode& node, std::string_view word) {
    const std::string_view keyword = NearestKeyword(word);
    if (keyword.empty() && !IsSeveralKeywords(word)) return;
    const auto [entry, isNew] = placeOf.try_emplace(std::string(word), found.size());
    if (isNew) found.push_back({std::string(word), keyword, {}});
    found[entry->second].nodes.push_back(node.name);
  });
  return found;
}

Remark Describe(NearKeyword near) {
  const std::size_t count = near.nodes.size();
  Remark remark =
      MakeWarning("near-keyword",
                  fmt::format("\"{}\" in the user properties of node \"{}\"{} is no keyword; {}",
                              near.word, near.nodes.front(),
                              count == 1 ? "" : fmt::format(" and {} more lines", count - 1),
                              near.keyword.empty() ? "each keyword has a line of its own"
                                                   : fmt::format("\"{}\" is one", near.keyword)),
                  count);
  remark.nodes = std::move(near.nodes);
  return remark;
}

}  // namespace mapexport
