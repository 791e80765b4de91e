#include "compare/CompareModels.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "compare/MaterialFields.h"
#include "compare/SameBits.h"
#include "system/IsFinite.h"

namespace mapexport {
namespace {

bool SameBatch(const ModelBatch& a, const ModelBatch& b) {
  static_assert(sizeof(ModelBatchFace) == 28 && sizeof(ModelCorner) == 36);
  return a.material == b.material && SameBits(a.faces, b.faces) && SameBits(a.corners, b.corners);
}

bool SameSet(const ModelSurfaceSet& a, const ModelSurfaceSet& b) {
  return a.name == b.name && a.flags == b.flags && a.faces == b.faces;
}

bool SameGroup(const ModelGroup& a, const ModelGroup& b) {
  static_assert(sizeof(ModelFace) == 16);
  return a.header.name == b.header.name && SameBits(a.vertices, b.vertices) &&
         std::ranges::equal(a.batches, b.batches, SameBatch) &&
         SameBits(a.collisionPoints, b.collisionPoints) && SameBits(a.planes, b.planes) &&
         SameBits(a.faces, b.faces) && std::ranges::equal(a.surfaceSets, b.surfaceSets, SameSet);
}

/// Whether two models with the same content are written as the same bytes.
bool SameOrder(const ModelFile& a, const ModelFile& b) {
  return std::ranges::equal(
             a.materials, b.materials, {},
             [](const ModelMaterial& material) { return material.header.name; },
             [](const ModelMaterial& material) { return material.header.name; }) &&
         std::ranges::equal(a.groups, b.groups, SameGroup);
}

void MatchMaterials(const Both<const ModelFile*>& models, ModelDifference& difference,
                    Both<SharedNumbers>& numbers) {
  // The numbers of the materials of a name: the first one, the second one, ...
  std::map<std::string_view, std::vector<std::uint32_t>> known;
  for (std::size_t i = 0; i < models.size(); ++i) {
    std::map<std::string_view, std::size_t> times;
    for (const ModelMaterial& material : models[i]->materials) {
      std::vector<std::uint32_t>& ofName = known[material.header.name];
      const std::size_t time = times[material.header.name]++;
      if (time == ofName.size()) {
        ofName.push_back(static_cast<std::uint32_t>(difference.materials.size()));
        difference.materials.emplace_back();
      }
      difference.materials[ofName[time]].material[i] = &material;
      numbers[i].materials.push_back(ofName[time]);
    }
  }
  for (MaterialDifference& each : difference.materials) {
    if (each.material[0] == nullptr || each.material[1] == nullptr) continue;
    VisitChangedFields(*each.material[0], *each.material[1],
                       [&](const auto&...) { each.fieldsDiffer = true; });
  }
}

void MatchSets(const Both<const ModelFile*>& models, ModelDifference& difference,
               Both<SharedNumbers>& numbers) {
  const bool hasSets = models[0]->layout == models[1]->layout;
  std::map<std::string_view, Both<std::set<std::uint32_t>>> flagsOf;
  for (std::size_t i = 0; i < models.size(); ++i) {
    for (const ModelGroup& group : models[i]->groups) {
      if (!hasSets) continue;
      for (const ModelSurfaceSet& set : group.surfaceSets) flagsOf[set.name][i].insert(set.flags);
    }
  }
  Both<std::map<std::pair<std::string_view, std::uint32_t>, std::uint32_t>> numberOf;
  for (auto& [name, flags] : flagsOf) {
    const auto add = [&, setName = name](Both<std::optional<std::uint32_t>> of) {
      for (std::size_t i = 0; i < of.size(); ++i) {
        if (!of[i]) continue;
        numberOf[i][{setName, *of[i]}] = static_cast<std::uint32_t>(difference.sets.size());
      }
      difference.sets.push_back({setName, of, {}});
    };
    std::vector<std::uint32_t> common;
    std::ranges::set_intersection(flags[0], flags[1], std::back_inserter(common));
    for (const std::uint32_t each : common) {
      add({each, each});
      flags[0].erase(each);
      flags[1].erase(each);
    }
    if (flags[0].size() == 1 && flags[1].size() == 1) {
      add({*flags[0].begin(), *flags[1].begin()});
      continue;
    }
    for (const std::uint32_t each : flags[0]) add({each, std::nullopt});
    for (const std::uint32_t each : flags[1]) add({std::nullopt, each});
  }
  for (std::size_t i = 0; i < models.size(); ++i) {
    for (const ModelGroup& group : models[i]->groups) {
      std::vector<std::uint32_t>& ofGroup = numbers[i].sets.emplace_back();
      for (const ModelSurfaceSet& set : group.surfaceSets) {
        ofGroup.push_back(hasSets ? numberOf[i].at({set.name, set.flags}) : kNoSet);
      }
    }
  }
}

void Extend(std::optional<Bounds>& bounds, ModelPoint point) {
  if (!IsFinite(point)) return;
  point = {point.x + 0.0f, point.y + 0.0f, point.z + 0.0f};  // -0 becomes 0
  if (!bounds) bounds = Bounds{point, point};
  ModelPoint& least = bounds->least;
  ModelPoint& most = bounds->most;
  least = {std::min(least.x, point.x), std::min(least.y, point.y), std::min(least.z, point.z)};
  most = {std::max(most.x, point.x), std::max(most.y, point.y), std::max(most.z, point.z)};
}

/// Tallies the triangles. `keyOf` makes a triangle comparable by what counts, its tally first;
/// `tallyOf` finds that tally by the key, or returns null for triangles that have none.
template <class KeyOf, class TallyOf>
void Count(const std::vector<ModelTriangle>& triangles, KeyOf keyOf, TallyOf tallyOf) {
  Both<std::vector<decltype(keyOf(triangles[0]))>> keys;
  for (const ModelTriangle& triangle : triangles) {
    const auto key = keyOf(triangle);
    TriangleTally* const tally = tallyOf(std::get<0>(key));
    if (tally == nullptr) continue;
    ++tally->count[triangle.model];
    for (const ModelPoint& point : triangle.points) Extend(tally->bounds[triangle.model], point);
    keys[triangle.model].push_back(key);
  }
  for (auto& side : keys) std::ranges::sort(side);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    std::vector<decltype(keyOf(triangles[0]))> only;
    std::ranges::set_difference(keys[i], keys[1 - i], std::back_inserter(only));
    for (const auto& key : only) ++tallyOf(std::get<0>(key))->only[i];
  }
}

void CountTriangles(const std::vector<ModelTriangle>& triangles, ModelDifference& difference) {
  Count(
      triangles,
      [](const ModelTriangle& each) {
        return std::tuple(0, each.content, each.material, each.set);
      },
      [&](int) { return &difference.triangles; });
  Count(
      triangles, [](const ModelTriangle& each) { return std::tuple(each.material, each.content); },
      [&](std::uint32_t material) {
        if (material == kUndrawn) return &difference.undrawn;
        if (material == kNoMaterial) return &difference.withoutMaterial;
        return &difference.materials[material].triangles;
      });
  Count(
      triangles, [](const ModelTriangle& each) { return std::tuple(each.set, each.content); },
      [&](std::uint32_t set) { return set == kNoSet ? nullptr : &difference.sets[set].triangles; });
}

bool SameContent(const ModelDifference& difference) {
  return difference.layout[0] == difference.layout[1] && difference.name[0] == difference.name[1] &&
         !difference.triangles.Changed() &&
         std::ranges::none_of(difference.materials, &MaterialDifference::Changed) &&
         std::ranges::none_of(difference.sets, &SetDifference::Changed);
}

}  // namespace

bool Bounds::operator==(const Bounds& other) const {
  return SameBits(least, other.least) && SameBits(most, other.most);
}

bool MaterialDifference::Changed() const {
  return material[0] == nullptr || material[1] == nullptr || fieldsDiffer || triangles.Changed();
}

ModelDifference CompareModels(const ModelFile& first, const ModelFile& second,
                              Both<TriangleMarks>* marks) {
  const Both<const ModelFile*> models{&first, &second};
  ModelDifference difference;
  Both<SharedNumbers> numbers;
  for (std::size_t i = 0; i < models.size(); ++i) {
    const ModelFile& model = *models[i];
    difference.layout[i] = model.layout;
    if (!model.groups.empty()) difference.name[i] = model.groups.front().header.name;
    difference.summary[i] = Summarise(model);
    difference.groups[i] = model.groups.size();
  }
  MatchMaterials(models, difference, numbers);
  MatchSets(models, difference, numbers);
  std::vector<ModelTriangle> triangles = NumberTriangles(models, numbers);
  CountTriangles(triangles, difference);
  if (marks != nullptr) *marks = MarkTriangles(std::move(triangles));
  if (!SameContent(difference)) return difference;
  difference.result =
      SameOrder(first, second) ? ModelComparison::kEqual : ModelComparison::kOrderDiffers;
  return difference;
}

}  // namespace mapexport
