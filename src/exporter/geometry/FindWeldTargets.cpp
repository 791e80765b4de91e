#include "exporter/geometry/FindWeldTargets.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

#include "exporter/geometry/VertexAttribute.h"

namespace mapexport {
namespace {

// Widths of a cell, in reaches. Even with the narrowest most queries look into at most two cells
// per axis.
constexpr int kWidest = 32;
constexpr int kNarrowest = 2;

/// The grid is moved by this fraction of a cell: round coordinates would sit on the borders of a
/// grid through the origin.
constexpr double kShift = 0.37;

/// More than rounding can move a coordinate by, in cells.
constexpr double kMargin = 1e-6;

// How many comparisons are fair per vertex, and before the count is judged at all.
constexpr std::int64_t kTestsPerVertex = 8;
constexpr std::int64_t kFirstTests = 4096;

/// Vertices whose chains are fetched ahead of their queries.
constexpr std::size_t kBlock = 64;

/// A float that two coordinates differ by less than when the squares of the differences add up to
/// less than `squaredDistance`. Rounding is monotone: when a rounded sum is below a float, so is
/// each square, and when a rounded difference is below a float, so is the exact one. So only the
/// root's own rounding needs a margin.
float ReachOf(float squaredDistance) {
  // An infinite square only leaves out the sums that overflow.
  const float finite = std::min(squaredDistance, std::numeric_limits<float>::max());
  const auto root = static_cast<float>(std::sqrt(static_cast<double>(finite)));
  return std::nextafter(root, std::numeric_limits<float>::infinity());
}

/// std::floor for what fits, without the call.
std::int64_t Floor(double x) {
  const auto truncated = static_cast<std::int64_t>(x);
  return truncated - (static_cast<double>(truncated) > x ? 1 : 0);
}

/// The cells of an axis: whole numbers, of equal width around the origin. Far out, where
/// neighbouring floats are further apart than the reach, every float is its own cell, so that
/// nothing crowds into an outermost one.
class Axis {
 public:
  struct Range {
    std::int64_t own;  ///< the cell of the coordinate itself
    bool below;        ///< coordinates within the reach can lie in the cell below
    bool above;
  };

  /// `reach` is what two near coordinates differ by less than, `widthInReaches` a cell's width.
  Axis(float reach, int widthInReaches)
      : perUnit_(1.0 / (static_cast<double>(reach) * widthInReaches)),
        borderland_(1.0 / widthInReaches + kMargin) {
    // The least spacing of floats from 2^e on, and of those just below it, is 2^(e - 24).
    int exponent = 0;
    std::frexp(reach, &exponent);
    farOut_ = std::ldexp(1.0, exponent + 24);
  }

  Range CellsAround(float x) const {
    if (std::fabs(static_cast<double>(x)) >= farOut_) {
      // Beyond all other cells, which are fewer than 2^25 to each side.
      return {(std::int64_t{1} << 32) + std::bit_cast<std::uint32_t>(x), false, false};
    }
    const double place = static_cast<double>(x) * perUnit_ + kShift;
    const std::int64_t own = Floor(place);
    const double within = place - static_cast<double>(own);
    const bool nearBelow = within < borderland_;
    const bool nearAbove = 1.0 - within < borderland_;
    return {own, nearBelow, nearAbove};
  }

 private:
  double perUnit_;     ///< cells per unit
  double farOut_;      ///< the magnitude from which every float has its own cell
  double borderland_;  ///< of a cell, the part from which the reach can leave it
};

/// A hash grid to which vertices are added in index order. A cell's chain begins with its newest
/// vertex, so the first hit of a chain is its best, and a search ends at the best hit so far.
///
/// Cells are wide at first, so that most queries look into one, and are narrowed when vertices
/// crowd into them. Vertices in the same small fraction of a cell are all near each other. A query
/// looks into its own cell first, and so goes back at most to the last vertex in its own fraction.
/// Hence a vertex is passed over once per fraction around it, not once per query: the time is
/// linear in the vertices, wherever they are.
class WeldGrid {
 public:
  WeldGrid(std::span<const Point3> vertices, float squaredDistance)
      : vertices_(vertices),
        squaredDistance_(squaredDistance),
        reach_(ReachOf(squaredDistance)),
        axis_(reach_, width_),
        heads_(std::bit_ceil(std::max<std::size_t>(vertices.size(), 2)), 0),
        hashShift_(64 - std::countr_zero(heads_.size())),
        older_(vertices.size()) {}

  std::vector<std::uint32_t> FindTargets() {
    std::vector<std::uint32_t> targets(vertices_.size());
    std::uint32_t blockEnd = 0;
    for (std::uint32_t i = 0; i < vertices_.size(); ++i) {
      if (i == blockEnd) blockEnd = StartBlock(i);
      const std::uint32_t hit = IsFinite(vertices_[i]) ? Add(i, block_[i % kBlock]) : 0;
      targets[i] = hit == 0 ? i : hit - 1;
      if (allowance_ >= 0 || width_ <= kNarrowest) continue;
      Narrow(i + 1);
      blockEnd = i + 1;
    }
    return targets;
  }

 private:
  /// Where a vertex is.
  struct Place {
    Axis::Range x;
    Axis::Range y;
    Axis::Range z;
    std::uint32_t* head;  ///< of its own cell's chain
  };

  Place PlaceOf(const Point3& vertex) {
    Place place{axis_.CellsAround(vertex.x), axis_.CellsAround(vertex.y),
                axis_.CellsAround(vertex.z), nullptr};
    place.head = &HeadOf(place.x.own, place.y.own, place.z.own);
    return place;
  }

  std::uint32_t& HeadOf(std::int64_t x, std::int64_t y, std::int64_t z) {
    std::uint64_t hash = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15u +
                         static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu +
                         static_cast<std::uint64_t>(z) * 0x165667B19E3779F9u;
    hash = (hash ^ (hash >> 32)) * 0xD6E8FEB86659FD93u;
    return heads_[hash >> hashShift_];
  }

  /// Works out the places of the vertices up to the next multiple of kBlock, which it returns.
  std::uint32_t StartBlock(std::uint32_t first) {
    const std::size_t end = std::min((first / kBlock + 1) * kBlock, vertices_.size());
    for (std::size_t i = first; i < end; ++i) {
      if (!IsFinite(vertices_[i])) continue;
      block_[i % kBlock] = PlaceOf(vertices_[i]);
      __builtin_prefetch(block_[i % kBlock].head);
    }
    return static_cast<std::uint32_t>(end);
  }

  /// Adds vertex `i` and returns the index + 1 of the newest one before it that is near, 0 when
  /// there is none.
  std::uint32_t Add(std::uint32_t i, const Place& place) {
    allowance_ += kTestsPerVertex;
    const Point3& vertex = vertices_[i];
    std::uint32_t best = NewestOfChain(*place.head, vertex, 0);
    if (place.x.below || place.x.above || place.y.below || place.y.above || place.z.below ||
        place.z.above) {
      best = NewestOfNeighbours(vertex, place, best);
    }
    Link(i, place);
    return best;
  }

  /// The index + 1 of the newest linked vertex in the other cells that is near, `best` when nothing
  /// newer than that is.
  std::uint32_t NewestOfNeighbours(const Point3& vertex, const Place& place, std::uint32_t best) {
    for (int dx = place.x.below ? -1 : 0; dx <= (place.x.above ? 1 : 0); ++dx) {
      for (int dy = place.y.below ? -1 : 0; dy <= (place.y.above ? 1 : 0); ++dy) {
        for (int dz = place.z.below ? -1 : 0; dz <= (place.z.above ? 1 : 0); ++dz) {
          if (dx == 0 && dy == 0 && dz == 0) continue;
          best = NewestOfChain(HeadOf(place.x.own + dx, place.y.own + dy, place.z.own + dz), vertex,
                               best);
        }
      }
    }
    return best;
  }

  /// The same for one chain.
  std::uint32_t NewestOfChain(std::uint32_t head, const Point3& vertex, std::uint32_t best) {
    for (std::uint32_t candidate = head; candidate > best; candidate = older_[candidate - 1]) {
      const Point3 offset = vertices_[candidate - 1] - vertex;
      --allowance_;
      if (DotProd(offset, offset) < squaredDistance_) return candidate;
    }
    return best;
  }

  void Link(std::uint32_t i, const Place& place) {
    older_[i] = *place.head;
    *place.head = i + 1;
  }

  /// Halves the width of the cells, with the first `count` vertices in them.
  void Narrow(std::uint32_t count) {
    width_ /= 2;
    axis_ = Axis(reach_, width_);
    std::ranges::fill(heads_, 0u);
    for (std::uint32_t i = 0; i < count; ++i) {
      if (IsFinite(vertices_[i])) Link(i, PlaceOf(vertices_[i]));
    }
    allowance_ = kFirstTests;
  }

  std::span<const Point3> vertices_;
  float squaredDistance_;
  float reach_;
  int width_ = kWidest;               ///< of a cell, in reaches
  Axis axis_;                         ///< the same for all three
  std::vector<std::uint32_t> heads_;  ///< a power of two of chains: the newest vertex + 1, or 0
  int hashShift_;
  std::vector<std::uint32_t> older_;      ///< per vertex the next one of its chain + 1; 0 ends it
  std::array<Place, kBlock> block_;       ///< by the low bits of the index
  std::int64_t allowance_ = kFirstTests;  ///< how many more tests are fair before narrowing
};

}  // namespace

std::vector<std::uint32_t> FindWeldTargets(std::span<const Point3> vertices,
                                           float squaredDistance) {
  return WeldGrid(vertices, squaredDistance).FindTargets();
}

}  // namespace mapexport
