// What changed between two models, as people think of levels.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "compare/ModelTriangles.h"
#include "compare/TriangleMarks.h"
#include "modelreader/ModelFile.h"
#include "modelreader/ModelSummary.h"

namespace mapexport {

/// The box around points; those that are not finite are not in it.
struct Bounds {
  ModelPoint least;
  ModelPoint most;

  bool operator==(const Bounds& other) const;
};

/// The triangles of something in both models.
struct TriangleTally {
  Both<std::uint64_t> count{};
  Both<std::uint64_t> only{};  ///< of these, how many have no equal in the other model
  Both<std::optional<Bounds>> bounds;

  bool Changed() const { return only[0] + only[1] > 0; }
};

/// A material by its name. Of several with one name, the first of one model is the first of the
/// other, and so on.
struct MaterialDifference {
  Both<const ModelMaterial*> material{};  ///< null where there is none
  bool fieldsDiffer = false;              ///< VisitChangedFields has them
  TriangleTally triangles;                ///< the surface set does not count here

  bool Changed() const;
};

/// The surface sets of one name and with the same flags, in all groups. When one name has a single
/// set left in both models, it is the same set with other flags.
struct SetDifference {
  std::string_view name;
  Both<std::optional<std::uint32_t>> flags;  ///< empty where there is none
  TriangleTally triangles;                   ///< the material does not count here

  bool Changed() const { return flags[0] != flags[1] || triangles.Changed(); }
};

enum class ModelComparison { kEqual, kOrderDiffers, kDifferent };

/// Refers to the models.
struct ModelDifference {
  ModelComparison result = ModelComparison::kDifferent;
  Both<ModelLayout> layout{};
  Both<std::string_view> name;  ///< of the first group
  Both<ModelSummary> summary;
  Both<std::uint64_t> groups{};
  TriangleTally triangles;
  TriangleTally withoutMaterial;              ///< drawn ones
  TriangleTally undrawn;                      ///< for collision only
  std::vector<MaterialDifference> materials;  ///< all, in the order of the first model
  std::vector<SetDifference> sets;            ///< all, by name
};

/// Compares two sound models. Their content is the layout, the name of the first group, materials
/// by name, surface sets by name and flags, and the triangles: each with its material, its set, its
/// plane and its corners. In which groups and batches they are, and in which order anything is,
/// belongs to the order. Numbers are compared bit by bit. Between two layouts, of which one has no
/// surface sets, these don't count. `marks`, unless it is null, gets the marks of the triangles.
ModelDifference CompareModels(const ModelFile& first, const ModelFile& second,
                              Both<TriangleMarks>* marks = nullptr);

}  // namespace mapexport
