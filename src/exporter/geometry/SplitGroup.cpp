#include "exporter/geometry/SplitGroup.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "exporter/geometry/FaceFlags.h"

namespace mapexport {
namespace {

/// Where a cut may be, as a divisor of the faces, away from the exact place.
constexpr std::size_t kNearby = 20;
/// One part more than is demanded for each so many, so that cuts can be at voxel planes.
constexpr std::size_t kPartsPerSpare = 16;

/// The vertices that a part of a surface can have for itself when its list is full: those along its
/// edges, half of four times the root, are in its neighbours' lists, too.
std::size_t OwnVertices(std::size_t longest) {
  const auto shared = static_cast<std::size_t>(2.0 * std::sqrt(static_cast<double>(longest)));
  return longest > shared ? longest - shared : 1;
}

float CoordinateOf(const Point3& p, std::size_t axis) {
  return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
}

/// The middle of three numbers' range, whatever their order; finite, 0 for what is no number.
float MiddleOf(float a, float b, float c) {
  const float middle = 0.5f * std::min({a, b, c}) + 0.5f * std::max({a, b, c});
  constexpr float kMost = std::numeric_limits<float>::max();
  return std::isnan(middle) ? 0.0f : std::clamp(middle, -kMost, kMost);
}

/// A face and the middle of its bounds, which its reversed copy shares.
struct CentredFace {
  std::uint32_t face;
  Point3 centre;
};

/// How long the lists of some faces are.
struct PartLengths {
  std::size_t faces = 0;
  std::size_t vertices = 0;
  std::size_t points = 0;
};

class GroupSplitter {
 public:
  GroupSplitter(const GeometryGroup& group, const VoxelGrid& grid, const ListLimit& limit)
      : group_(group), grid_(grid), limit_(limit), seen_(group.vertices.size()) {
    for (const SurfaceSet& set : group.surfaceSets) {
      isUndrawn_.push_back(limit.hasFaceTable && (set.flags & kFlagNotRendered) != 0);
    }
    if (std::ranges::find(isUndrawn_, true) != isUndrawn_.end()) {
      seenPoints_.resize(group.vertices.size());
    }
  }

  GroupParts Split() {
    PlaceFaces();
    const PartLengths lengths = LengthsOf(placed_);
    // The first layout has the vertices that no face uses, too.
    const bool fits = limit_.hasFaceTable || group_.vertices.size() <= limit_.longest;
    if (fits && Fits(lengths)) return {};
    partOf_.resize(placed_.size());
    Divide(placed_, lengths, std::numeric_limits<std::size_t>::max());
    placed_ = {};  // free memory for the lists
    return ListParts();
  }

 private:
  using Faces = std::span<CentredFace>;

  void PlaceFaces() {
    placed_.reserve(group_.faces.size());
    for (std::uint32_t f = 0; f < group_.faces.size(); ++f) {
      const auto& v = group_.faces[f].v;
      const Point3& a = group_.vertices[v[0]];
      const Point3& b = group_.vertices[v[1]];
      const Point3& c = group_.vertices[v[2]];
      placed_.push_back(
          {f, {MiddleOf(a.x, b.x, c.x), MiddleOf(a.y, b.y, c.y), MiddleOf(a.z, b.z, c.z)}});
    }
  }

  /// A batch has one corner per vertex, unless a face has a vertex twice, with other attributes:
  /// such a vertex counts twice.
  PartLengths LengthsOf(std::span<const CentredFace> faces) {
    PartLengths lengths{faces.size()};
    ++stamp_;
    for (std::size_t i = 0; i < faces.size(); ++i) {
      constexpr std::size_t kAhead = 12;
      if (i + kAhead < faces.size()) {
        __builtin_prefetch(group_.faces.data() + faces[i + kAhead].face);
      }
      const GroupFace& face = group_.faces[faces[i].face];
      const bool undrawn = isUndrawn_[static_cast<std::size_t>(face.surfaceSet)];
      std::vector<std::uint32_t>& seen = undrawn ? seenPoints_ : seen_;
      std::size_t& count = undrawn ? lengths.points : lengths.vertices;
      for (std::size_t k = 0; k < 3; ++k) {
        count += std::exchange(seen[face.v[k]], stamp_) != stamp_;
        const std::size_t next = (k + 1) % 3;
        count += face.v[k] == face.v[next] && face.a[k] != face.a[next];
      }
    }
    return lengths;
  }

  bool Fits(const PartLengths& lengths) const {
    return (!limit_.hasFaceTable || lengths.faces <= limit_.longest) &&
           lengths.vertices <= limit_.longest && lengths.points <= limit_.longest;
  }

  /// The parts that lists which don't fit demand.
  std::size_t PartsFor(const PartLengths& lengths) const {
    const auto parts = [](std::size_t count, std::size_t most) {
      return (count + most - 1) / most;
    };
    const std::size_t vertices = std::max(lengths.vertices, lengths.points);
    return std::max(parts(vertices, OwnVertices(limit_.longest)),
                    limit_.hasFaceTable ? parts(lengths.faces, limit_.longest) : 0);
  }

  /// `allotted` is the number of parts that the cuts around these faces were made for.
  void Divide(Faces faces, const PartLengths& lengths, std::size_t allotted) {
    if (Fits(lengths) || faces.size() == 1) {
      for (const CentredFace& placed : faces) partOf_[placed.face] = partCount_;
      ++partCount_;
      return;
    }
    const std::size_t demanded = PartsFor(lengths);
    const std::size_t parts = std::clamp(allotted, demanded, demanded + demanded / kPartsPerSpare);
    const std::size_t before = parts / 2;
    const std::size_t cut = Cut(faces, before, parts - before);
    Divide(faces.first(cut), LengthsOf(faces.first(cut)), before);
    Divide(faces.subspan(cut), LengthsOf(faces.subspan(cut)), parts - before);
  }

  /// Sorts the faces of the first `before` of the parts before those of the other `after`, and
  /// returns their number.
  std::size_t Cut(Faces faces, std::size_t before, std::size_t after) {
    const std::size_t axis = LongestAxis(faces);
    // Along the axis, then along the other two, so that only faces in one place are equal.
    const auto key = [axis](const CentredFace& placed) {
      return std::array{CoordinateOf(placed.centre, axis),
                        CoordinateOf(placed.centre, (axis + 1) % 3),
                        CoordinateOf(placed.centre, (axis + 2) % 3)};
    };
    const auto sortAt = [&](std::size_t place) {
      std::ranges::nth_element(
          faces, faces.begin() + static_cast<std::ptrdiff_t>(place), {},
          [&](const CentredFace& placed) { return std::pair(key(placed), placed.face); });
    };
    const std::size_t count = faces.size();
    const std::size_t exact = std::clamp<std::size_t>(
        static_cast<std::size_t>(static_cast<double>(count) * static_cast<double>(before) /
                                 static_cast<double>(before + after)),
        1, count - 1);
    std::size_t least = std::max<std::size_t>(1, exact - std::min(exact, count / kNearby));
    std::size_t most = std::min(count - 1, exact + count / kNearby);
    if (limit_.hasFaceTable) {  // neither side may get more faces than its parts can hold
      least = std::max(least, count - std::min(count, after * limit_.longest));
      most = std::min(most, before * limit_.longest);
    }

    sortAt(exact);
    const std::array<float, 3> middle = key(faces[exact]);
    const std::int32_t cell = grid_.CellOf(faces[exact].centre)[axis];
    // How many faces lie before the voxel plane and up to the next one, and before the face at the
    // exact place and up to the last one that is in the same place.
    std::array<std::size_t, 2> planes{};
    std::array<std::size_t, 2> equals{};
    for (const CentredFace& placed : faces) {
      const std::int32_t own = grid_.CellOf(placed.centre)[axis];
      planes[0] += own < cell;
      planes[1] += own <= cell;
      equals[0] += key(placed) < middle;
      equals[1] += key(placed) <= middle;
    }
    for (std::array<std::size_t, 2>* places : {&planes, &equals}) {
      auto& [first, second] = *places;
      if (second - exact < exact - first) std::swap(first, second);
      for (const std::size_t place : *places) {
        if (place < least || place > most) continue;
        sortAt(place);
        return place;
      }
    }
    return exact;
  }

  static std::size_t LongestAxis(std::span<const CentredFace> faces) {
    std::size_t longest = 0;
    double length = -1;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      float least = CoordinateOf(faces[0].centre, axis);
      float most = least;
      for (const CentredFace& placed : faces) {
        least = std::min(least, CoordinateOf(placed.centre, axis));
        most = std::max(most, CoordinateOf(placed.centre, axis));
      }
      const double own = static_cast<double>(most) - static_cast<double>(least);
      if (own > length) {
        longest = axis;
        length = own;
      }
    }
    return longest;
  }

  GroupParts ListParts() const {
    GroupParts parts;
    parts.starts.resize(partCount_ + 1);
    for (const std::uint32_t part : partOf_) ++parts.starts[part];
    std::uint32_t end = 0;
    for (std::uint32_t& start : parts.starts) start = end += start;
    parts.faces.resize(partOf_.size());
    for (auto f = static_cast<std::uint32_t>(partOf_.size()); f-- > 0;) {
      parts.faces[--parts.starts[partOf_[f]]] = f;
    }
    return parts;
  }

  const GeometryGroup& group_;
  const VoxelGrid& grid_;
  const ListLimit limit_;
  std::vector<bool> isUndrawn_;            ///< per surface set
  std::vector<std::uint32_t> seen_;        ///< per vertex the stamp of the last count that has it
  std::vector<std::uint32_t> seenPoints_;  ///< the same as a collision point
  std::uint32_t stamp_ = 0;
  std::vector<CentredFace> placed_;
  std::vector<std::uint32_t> partOf_;  ///< per face
  std::uint32_t partCount_ = 0;
};

}  // namespace

GroupParts SplitGroup(const GeometryGroup& group, const VoxelGrid& grid, const ListLimit& limit) {
  if (limit.longest == 0) return {};
  return GroupSplitter(group, grid, limit).Split();
}

}  // namespace mapexport
