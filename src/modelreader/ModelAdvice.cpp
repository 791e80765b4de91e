#include "modelreader/ModelAdvice.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "modelreader/ModelSummary.h"
#include "system/Counted.h"
#include "system/IsFinite.h"
#include "system/PrintableText.h"

namespace mapexport {
namespace {

// Below so many triangles a draw call costs more than what it draws.
constexpr std::size_t kFewTriangles = 20;
// So many draw calls are cheap whatever they draw, and small levels have no larger batches.
constexpr std::size_t kManyBatches = 100;
// A list that is fuller is likely to become too long with the next change of the level.
constexpr double kNearlyFull = 0.9;
// The share of the vertices at each end of an axis that may be stray, as one part in so many. With
// fewer vertices than that, none can be told from the rest.
constexpr std::size_t kStrayPart = 20;
// How far from the rest is unusual, in sizes of the rest: skies and horizons are nearer.
constexpr double kFarSizes = 20;
constexpr std::size_t kNameColumns = 32;

void AdviseOnBatches(const ModelSummary& summary, std::vector<std::string>& advice) {
  if (summary.batches < kManyBatches || summary.drawn >= kFewTriangles * summary.batches) return;
  advice.push_back(fmt::format(
      "{} batches have {:.1f} triangles each on average, and each is a draw call: export with a "
      "larger --voxel-size, or use fewer materials",
      summary.batches, static_cast<double>(summary.drawn) / static_cast<double>(summary.batches)));
}

/// A model of several groups has already been split, so that its lists fit.
void AdviseOnLists(const ModelFile& model, const ModelSummary& summary,
                   std::vector<std::string>& advice) {
  if (model.groups.size() > 1) return;
  const double share =
      static_cast<double>(summary.fullest.count) / static_cast<double>(kModelIndexLimit);
  if (share < kNearlyFull) return;
  advice.push_back(fmt::format("{} has {} of at most {} entries: export with --split",
                               summary.fullest.place, summary.fullest.count, kModelIndexLimit));
}

/// The file does not say which materials the faces for collision only have, so nothing is known
/// when there are such faces.
void AdviseOnMaterials(const ModelFile& model, const ModelSummary& summary,
                       std::vector<std::string>& advice) {
  if (summary.unused.empty() || summary.undrawn > 0) return;
  const std::size_t first = summary.unused.front();
  advice.push_back(
      fmt::format("nothing uses {}, the first is {} {}: remove unused materials from the scene",
                  Counted(summary.unused.size(), "material"), first,
                  PrintableText(model.materials[first].header.name, kNameColumns)));
}

void AdviseOnSets(const ModelFile& model, std::vector<std::string>& advice) {
  std::size_t empty = 0;
  std::string first;
  for (std::size_t g = 0; g < model.groups.size(); ++g) {
    const std::vector<ModelSurfaceSet>& sets = model.groups[g].surfaceSets;
    for (std::size_t s = 0; s < sets.size(); ++s) {
      if (!sets[s].faces.empty()) continue;
      if (empty++ == 0) first = fmt::format("groups[{}].surfaceSets[{}]", g, s);
    }
  }
  if (empty == 0) return;
  advice.push_back(fmt::format(
      "{} no faces, the first is {}: check the keywords and the meshes that have them",
      empty == 1 ? "1 surface set has" : fmt::format("{} surface sets have", empty), first));
}

void AdviseOnFarVertices(const ModelFile& model, std::vector<std::string>& advice) {
  using Axis = float ModelPoint::*;
  static constexpr std::array<Axis, 3> kAxes{&ModelPoint::x, &ModelPoint::y, &ModelPoint::z};
  std::vector<const ModelPoint*> points;
  for (const ModelGroup& group : model.groups) {
    for (const ModelPoint& point : group.vertices) {
      if (IsFinite(point)) points.push_back(&point);
    }
  }
  const std::size_t cut = points.size() / kStrayPart;
  if (cut == 0) return;

  std::array<double, 3> least{};
  std::array<double, 3> most{};
  double size = 0;
  std::vector<float> values(points.size());
  for (std::size_t a = 0; a < kAxes.size(); ++a) {
    std::ranges::transform(points, values.begin(),
                           [a](const ModelPoint* point) { return point->*kAxes[a]; });
    const auto valueAt = [&](std::size_t rank) -> double {
      const auto place = values.begin() + static_cast<std::ptrdiff_t>(rank);
      std::ranges::nth_element(values, place);
      return *place;
    };
    least[a] = valueAt(cut);
    most[a] = valueAt(values.size() - 1 - cut);
    size = std::max(size, most[a] - least[a]);
  }
  if (size == 0) return;

  std::size_t far = 0;
  const ModelPoint* first = nullptr;
  for (const ModelPoint* const point : points) {
    double distance = 0;
    for (std::size_t a = 0; a < kAxes.size(); ++a) {
      const double value = point->*kAxes[a];
      distance = std::max({distance, least[a] - value, value - most[a]});
    }
    if (distance <= kFarSizes * size) continue;
    if (far++ == 0) first = point;
  }
  if (far == 0) return;
  advice.push_back(fmt::format(
      "{} far outside the rest, the first at ({}, {}, {}): move or delete the faces there, unless "
      "they are meant to be there",
      far == 1 ? "1 vertex is" : fmt::format("{} vertices are", far), first->x, first->y,
      first->z));
}

}  // namespace

std::vector<std::string> Advise(const ModelFile& model) {
  const ModelSummary summary = Summarise(model);
  std::vector<std::string> advice;
  AdviseOnBatches(summary, advice);
  AdviseOnLists(model, summary, advice);
  AdviseOnMaterials(model, summary, advice);
  AdviseOnSets(model, advice);
  AdviseOnFarVertices(model, advice);
  return advice;
}

}  // namespace mapexport
