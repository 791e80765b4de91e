#include "importer/LimitRemarks.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "system/Utf8.h"

namespace mapexport {
namespace {

constexpr std::string_view kCut = "...";

/// How many codes the remarks have.
std::size_t CodesOf(const Remarks& remarks) {
  std::set<std::string_view> codes;
  for (const Remark& remark : remarks) codes.insert(remark.code);
  return codes.size();
}

void LimitNodes(Remarks& remarks) {
  std::size_t room = kMostNodeBytes;
  for (Remark& remark : remarks) {
    const auto end = std::ranges::find_if(remark.nodes, [&room](const std::string& name) {
      const bool fits = NodeBytes(name) <= room;
      if (fits) room -= NodeBytes(name);
      return !fits;
    });
    remark.nodes.erase(end, remark.nodes.end());
  }
}

}  // namespace

void LimitRemarks(Remarks& remarks) {
  LimitNodes(remarks);
  for (Remark& remark : remarks) {
    if (remark.text.size() <= kLongestRemark) continue;
    remark.text.resize(WholeCharacters(remark.text, kLongestRemark - kCut.size()).size());
    remark.text += kCut;
  }
  if (remarks.size() <= kMostRemarks) return;

  // There are some dozens of codes.
  const std::size_t kept = kMostRemarks - std::min(CodesOf(remarks), kMostRemarks);
  Remarks others;
  std::map<std::string, std::size_t> placeOf;  // in others, by code
  for (std::size_t i = kept; i < remarks.size(); ++i) {
    Remark& remark = remarks[i];
    const auto [entry, isNew] = placeOf.try_emplace(remark.code, others.size());
    if (isNew) {
      others.push_back(std::move(remark));
      continue;
    }
    Remark& other = others[entry->second];
    other.count = AddCounts(other.count, remark.count);
    other.stands += remark.stands;
    std::ranges::move(remark.nodes, std::back_inserter(other.nodes));
  }
  remarks.resize(kept);
  for (Remark& other : others) {
    if (other.stands > 1) other.text = MoreLikeThese(other.stands, other.kind, other.code);
    if (remarks.size() < kMostRemarks) remarks.push_back(std::move(other));
  }
}

std::string MoreLikeThese(std::uint64_t remarks, RemarkKind kind, const std::string& code) {
  return fmt::format("{} more {}{} like these ({})", remarks,
                     kind == RemarkKind::kWarning ? "warning" : "note", remarks == 1 ? "" : "s",
                     code);
}

}  // namespace mapexport
