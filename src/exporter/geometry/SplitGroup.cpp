#include "exporter/geometry/SplitGroup.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <tuple>
#include <utility>

#include "exporter/geometry/FaceFlags.h"

namespace mapexport {
namespace {

/// Where a cut may be, as a divisor of the faces, away from the exact place.
constexpr std::size_t kNearby = 20;
/// One part more than is demanded for each so many, so that cuts can be at voxel planes.
constexpr std::size_t kPartsPerSpare = 16;
/// Where faces alone demand more parts than this, vertices are estimated, not counted.
constexpr std::size_t kPartsToEstimate = 8;

/// The vertices that a part of a surface can have for itself when its list is full: those along its
/// edges, half of four times the root, are in its neighbours' lists, too.
std::size_t OwnVertices(std::size_t longest) {
  const auto shared = static_cast<std::size_t>(2.0 * std::sqrt(static_cast<double>(longest)));
  return longest > shared ? longest - shared : 1;
}

float CoordinateOf(const Point3& p, std::size_t axis) {
  return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
}

/// The middle of the range of three numbers; finite even where one is infinite or no number.
float MiddleOf(float a, float b, float c) {
  const float middle = 0.5f * std::min({a, b, c}) + 0.5f * std::max({a, b, c});
  constexpr float kMost = std::numeric_limits<float>::max();
  return std::isnan(middle) ? 0.0f : std::clamp(middle, -kMost, kMost);
}

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
    parts_.faces.resize(group_.faces.size());
    std::iota(parts_.faces.begin(), parts_.faces.end(), 0u);
    const PartLengths lengths = LengthsOf(parts_.faces);
    // The first layout has the vertices that no face uses, too.
    const bool fits = limit_.hasFaceTable || group_.vertices.size() <= limit_.longest;
    if (fits && Fits(lengths)) return {};
    FindCentres();
    keys_.resize(group_.faces.size());
    after_.resize(group_.faces.size());
    parts_.starts.push_back(0);
    Divide(parts_.faces, lengths, std::numeric_limits<std::size_t>::max());
    return std::move(parts_);
  }

 private:
  /// Faces that follow each other in the list of all parts, in ascending order.
  using Faces = std::span<std::uint32_t>;

  void FindCentres() {
    centres_.reserve(group_.faces.size());
    for (const GroupFace& face : group_.faces) {
      const Point3& a = group_.vertices[face.v[0]];
      const Point3& b = group_.vertices[face.v[1]];
      const Point3& c = group_.vertices[face.v[2]];
      centres_.push_back(
          {MiddleOf(a.x, b.x, c.x), MiddleOf(a.y, b.y, c.y), MiddleOf(a.z, b.z, c.z)});
    }
  }

  /// A batch has one corner per vertex, unless a face has a vertex twice, with other attributes:
  /// each such pair counts as one corner more, which is enough.
  PartLengths LengthsOf(std::span<const std::uint32_t> faces) {
    PartLengths lengths{faces.size()};
    ++stamp_;
    for (std::size_t i = 0; i < faces.size(); ++i) {
      FetchAhead(group_.faces, faces, i);
      const GroupFace& face = group_.faces[faces[i]];
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

  /// The same for one side of a cut through faces with the lists `whole`; estimated while it is to
  /// be cut again anyway.
  PartLengths LengthsOfSide(std::span<const std::uint32_t> faces, const PartLengths& whole) {
    if (!limit_.hasFaceTable || faces.size() <= kPartsToEstimate * limit_.longest) {
      return LengthsOf(faces);
    }
    const double share = static_cast<double>(faces.size()) / static_cast<double>(whole.faces);
    const auto estimate = [share](std::size_t count) {
      return static_cast<std::size_t>(share * static_cast<double>(count));
    };
    return {faces.size(), estimate(whole.vertices), estimate(whole.points)};
  }

  bool Fits(const PartLengths& lengths) const {
    return (!limit_.hasFaceTable || lengths.faces <= limit_.longest) &&
           lengths.vertices <= limit_.longest && lengths.points <= limit_.longest;
  }

  /// The parts that the lists demand.
  std::size_t PartsFor(const PartLengths& lengths) const {
    if (Fits(lengths)) return 1;
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
      parts_.starts.push_back(parts_.starts.back() + static_cast<std::uint32_t>(faces.size()));
      return;
    }
    const std::size_t demanded = PartsFor(lengths);
    const std::size_t parts = std::clamp(allotted, demanded, demanded + demanded / kPartsPerSpare);
    const std::size_t before = parts / 2;
    const std::size_t after = parts - before;
    std::size_t cut = Cut(faces, RangeOf(faces.size(), before, after));
    PartLengths low = LengthsOfSide(faces.first(cut), lengths);
    PartLengths high = LengthsOfSide(faces.subspan(cut), lengths);
    if (PartsFor(low) > before || PartsFor(high) > after) {
      // The vertices are not spread evenly over the faces: cut again, where they are.
      std::ranges::inplace_merge(faces, faces.begin() + static_cast<std::ptrdiff_t>(cut));
      cut = Cut(faces, EvenRangeOf(low, before, high, after));
      low = LengthsOfSide(faces.first(cut), lengths);
      high = LengthsOfSide(faces.subspan(cut), lengths);
    }
    Divide(faces.first(cut), low, before);
    Divide(faces.subspan(cut), high, after);
  }

  /// Where some faces are cut.
  struct CutRange {
    std::size_t least;
    std::size_t exact;
    std::size_t most;

    /// The nearer of two places around the exact one, if it is allowed, else the other.
    std::optional<std::size_t> Nearer(std::size_t low, std::size_t high) const {
      if (high - exact < exact - low) std::swap(low, high);
      for (const std::size_t place : {low, high}) {
        if (place >= least && place <= most) return place;
      }
      return std::nullopt;
    }
  };

  /// The least and the most faces before a cut: each side gets some, and none more than its parts
  /// can hold.
  std::pair<std::size_t, std::size_t> FacesThatFit(std::size_t count, std::size_t before,
                                                   std::size_t after) const {
    if (!limit_.hasFaceTable) return {1, count - 1};
    return {std::max<std::size_t>(1, count - std::min(count, after * limit_.longest)),
            std::min(count - 1, before * limit_.longest)};
  }

  /// A cut that divides the faces as the parts are, or near that.
  CutRange RangeOf(std::size_t count, std::size_t before, std::size_t after) const {
    const double share = static_cast<double>(before) / static_cast<double>(before + after);
    const auto [least, most] = FacesThatFit(count, before, after);
    const std::size_t exact =
        std::clamp(static_cast<std::size_t>(share * static_cast<double>(count)), least, most);
    const std::size_t nearby = count / kNearby;
    return {std::max(least, exact - std::min(exact, nearby)), exact,
            std::min(most, exact + nearby)};
  }

  /// The place where the sides would have vertices as they have parts, if these were spread evenly
  /// over the faces on either side of the earlier cut between `low` and `high`.
  CutRange EvenRangeOf(const PartLengths& low, std::size_t before, const PartLengths& high,
                       std::size_t after) const {
    const auto verticesOf = [](const PartLengths& lengths) {
      return static_cast<double>(std::max(lengths.vertices, lengths.points));
    };
    const double all = verticesOf(low) + verticesOf(high);
    const double share = static_cast<double>(before) / static_cast<double>(before + after);
    const double missing = share * all - verticesOf(low);
    const PartLengths& side = missing < 0 ? low : high;
    const double place = static_cast<double>(low.faces) +
                         missing * static_cast<double>(side.faces) / verticesOf(side);
    const auto [least, most] = FacesThatFit(low.faces + high.faces, before, after);
    const auto exact = static_cast<std::size_t>(
        std::clamp(place, static_cast<double>(least), static_cast<double>(most)));
    return {exact, exact, exact};
  }

  /// Moves as many faces as the range says before the others, and returns their number.
  std::size_t Cut(Faces faces, const CutRange& range) {
    const std::size_t axis = LongestAxis(faces);
    const std::span<float> keys = std::span(keys_).first(faces.size());
    std::ranges::transform(faces, keys.begin(),
                           [&](std::uint32_t f) { return CoordinateOf(centres_[f], axis); });
    const auto exact = keys.begin() + static_cast<std::ptrdiff_t>(range.exact);
    std::ranges::nth_element(keys, exact);
    const float middle = *exact;

    const std::int32_t cell = grid_.CellOf(middle, axis);
    std::size_t low = 0;   // faces before the voxel plane
    std::size_t high = 0;  // and before the next one
    for (const float key : keys) {
      const std::int32_t own = grid_.CellOf(key, axis);
      low += own < cell;
      high += own <= cell;
    }
    if (const std::optional<std::size_t> place = range.Nearer(low, high)) {
      const std::int32_t end = *place == low ? cell : cell + 1;
      return MoveBefore(faces, [&](std::uint32_t f) {
        return grid_.CellOf(CoordinateOf(centres_[f], axis), axis) < end;
      });
    }
    return CutAtFace(faces, axis, middle, range);
  }

  /// Cuts at the exact place, whose coordinate is `middle`. Faces with equal centres stay together
  /// if the range allows that.
  std::size_t CutAtFace(Faces faces, std::size_t axis, float middle, const CutRange& range) {
    // Along the axis, along the other two, and the face.
    using Key = std::tuple<float, float, float, std::uint32_t>;
    const auto keyOf = [&](std::uint32_t f) {
      return Key(CoordinateOf(centres_[f], axis), CoordinateOf(centres_[f], (axis + 1) % 3),
                 CoordinateOf(centres_[f], (axis + 2) % 3), f);
    };
    std::size_t low = 0;
    std::vector<std::uint32_t> level;  // faces with that coordinate
    for (const std::uint32_t f : faces) {
      const float key = CoordinateOf(centres_[f], axis);
      low += key < middle;
      if (key == middle) level.push_back(f);
    }
    const auto exact = level.begin() + static_cast<std::ptrdiff_t>(range.exact - low);
    std::ranges::nth_element(level, exact, {}, keyOf);
    Key end = keyOf(*exact);
    Key first = end;
    Key last = end;
    std::get<3>(first) = 0;
    std::get<3>(last) = std::numeric_limits<std::uint32_t>::max();
    std::size_t high = low;
    for (const std::uint32_t f : level) {
      low += keyOf(f) < first;
      high += keyOf(f) < last;
    }
    if (const std::optional<std::size_t> place = range.Nearer(low, high)) {
      end = *place == low ? first : last;
    }
    return MoveBefore(faces, [&](std::uint32_t f) { return keyOf(f) < end; });
  }

  /// Moves the faces for which `isBefore` holds before the others, all in their order, and returns
  /// their number.
  template <typename IsBefore>
  std::size_t MoveBefore(Faces faces, const IsBefore& isBefore) {
    std::size_t before = 0;
    std::size_t after = 0;
    for (const std::uint32_t f : faces) {
      if (isBefore(f)) {
        faces[before++] = f;
      } else {
        after_[after++] = f;
      }
    }
    std::ranges::copy(std::span(after_).first(after),
                      faces.begin() + static_cast<std::ptrdiff_t>(before));
    return before;
  }

  std::size_t LongestAxis(std::span<const std::uint32_t> faces) const {
    Point3 least = centres_[faces[0]];
    Point3 most = least;
    for (const std::uint32_t f : faces) {
      const Point3& c = centres_[f];
      least = {std::min(least.x, c.x), std::min(least.y, c.y), std::min(least.z, c.z)};
      most = {std::max(most.x, c.x), std::max(most.y, c.y), std::max(most.z, c.z)};
    }
    std::array<double, 3> lengths{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      lengths[axis] = static_cast<double>(CoordinateOf(most, axis)) -
                      static_cast<double>(CoordinateOf(least, axis));
    }
    return static_cast<std::size_t>(std::ranges::max_element(lengths) - lengths.begin());
  }

  const GeometryGroup& group_;
  const VoxelGrid& grid_;
  const ListLimit limit_;
  std::vector<bool> isUndrawn_;            ///< per surface set
  std::vector<std::uint32_t> seen_;        ///< per vertex the stamp of the last count that has it
  std::vector<std::uint32_t> seenPoints_;  ///< the same as a collision point
  std::uint32_t stamp_ = 0;
  /// Per face the middle of its bounds, which is that of a reversed copy, too.
  std::vector<Point3> centres_;
  std::vector<float> keys_;           ///< scratch of Cut
  std::vector<std::uint32_t> after_;  ///< scratch of MoveBefore
  GroupParts parts_;
};

}  // namespace

GroupParts SplitGroup(const GeometryGroup& group, const VoxelGrid& grid, const ListLimit& limit) {
  if (limit.longest == 0) return {};
  return GroupSplitter(group, grid, limit).Split();
}

}  // namespace mapexport
