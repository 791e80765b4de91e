#include "modelreader/ModelSummary.h"

#include <cstdint>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "modelreader/ModelFaceFlags.h"
#include "modelreader/Place.h"

namespace mapexport {
namespace {

void TakeIfFuller(AddressedList& fullest, const Place& parent, std::string_view field,
                  std::size_t count) {
  if (count > fullest.count) fullest = {Place(parent, field).Path(), count};
}

}  // namespace

ModelSummary Summarise(const ModelFile& model) {
  ModelSummary summary;
  std::vector<bool> isUsed(model.materials.size());
  const bool hasFaceTable = model.layout == ModelLayout::kKob;
  const Place groups("groups");
  for (std::size_t g = 0; g < model.groups.size(); ++g) {
    const ModelGroup& group = model.groups[g];
    const Place place = groups.At(g);
    summary.vertices += group.vertices.size();
    summary.batches += group.batches.size();
    summary.undrawn += group.planes.size();
    TakeIfFuller(summary.fullest, place, "vertices", group.vertices.size());
    const Place batches(place, "batches");
    for (std::size_t b = 0; b < group.batches.size(); ++b) {
      const ModelBatch& batch = group.batches[b];
      summary.drawn += batch.faces.size();
      const auto material = static_cast<std::size_t>(batch.material);  // -1 becomes too large
      if (material < isUsed.size()) isUsed[material] = true;
      TakeIfFuller(summary.fullest, batches.At(b), "corners", batch.corners.size());
      if (hasFaceTable) {
        TakeIfFuller(summary.fullest, batches.At(b), "faces", batch.faces.size());
      }
    }
    if (!hasFaceTable) continue;
    TakeIfFuller(summary.fullest, place, "collisionPoints", group.collisionPoints.size());
    TakeIfFuller(summary.fullest, place, "faces", group.faces.size());
  }
  for (std::size_t i = 0; i < isUsed.size(); ++i) {
    if (!isUsed[i]) summary.unused.push_back(i);
  }
  return summary;
}

std::string FlagKeywords(std::uint32_t flags) {
  std::string keywords;
  const auto add = [&keywords](std::string_view keyword) {
    if (!keywords.empty()) keywords += ' ';
    keywords += keyword;
  };
  for (const ModelFaceFlag& flag : kModelFaceFlags) {
    if ((flags & flag.bit) == 0) continue;
    add(flag.keyword);
    flags &= ~flag.bit;
  }
  if (flags != 0) add(fmt::format("{:#x}", flags));
  return keywords.empty() ? "-" : keywords;
}

std::vector<KeywordUse> KeywordUses(std::span<const ModelGroup> groups) {
  std::vector<KeywordUse> uses;
  const auto count = [&](std::string_view keyword, const auto& has) {
    KeywordUse use{keyword, 0, 0};
    std::set<std::pair<std::string_view, std::uint32_t>> known;
    for (const ModelGroup& group : groups) {
      for (const ModelSurfaceSet& set : group.surfaceSets) {
        if (!has(set.flags)) continue;
        // Several groups are mostly parts of one divided group, and each has its own part of a set.
        const bool isNew = known.emplace(std::string_view(set.name), set.flags).second;
        if (isNew || groups.size() == 1) ++use.sets;
        use.faces += set.faces.size();
      }
    }
    if (use.sets > 0) uses.push_back(use);
  };
  for (const ModelFaceFlag& flag : kModelFaceFlags) {
    count(flag.keyword, [&flag](std::uint32_t flags) { return (flags & flag.bit) != 0; });
  }
  count("none", [](std::uint32_t flags) { return flags == 0; });
  return uses;
}

}  // namespace mapexport
