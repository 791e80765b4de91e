#include "geometry/WeldGrid.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace mapexport {
namespace {

// Widths of a cell in reaches. The narrowest still lets a query touch only two cells per axis.
constexpr int kWidest = 32;
constexpr int kNarrowest = 2;

/// Round coordinates sit on the borders of a grid through the origin; this fraction of a cell moves
/// it away.
constexpr double kShift = 0.37;

/// More than rounding can move a coordinate by, in cells.
constexpr double kMargin = 1e-6;

// Tests of a pair that are fair: per vertex, and before anything is concluded from them.
constexpr std::int64_t kTestsPerVertex = 8;
constexpr std::int64_t kFirstTests = 4096;

/// A float that two coordinates differ by less than when the squares of the differences add up to
/// less than `squaredDistance`. Rounding never decreases as its argument grows. So a rounded sum
/// below a float means squares below it, and a rounded difference below a float means the same of
/// the difference itself: no margin is needed but for the root's own rounding.
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

bool IsFinite(const Point3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

}  // namespace

WeldGrid::Axis::Axis(float reach, int widthInReaches)
    : perUnit_(1.0 / (static_cast<double>(reach) * widthInReaches)),
      borderland_(1.0 / widthInReaches + kMargin) {
  // The least spacing of floats from 2^e on, and of those just below it, is 2^(e - 24).
  int exponent = 0;
  std::frexp(reach, &exponent);
  farOut_ = std::ldexp(1.0, exponent + 24);
}

WeldGrid::Axis::Range WeldGrid::Axis::CellsAround(float x) const {
  if (std::fabs(static_cast<double>(x)) >= farOut_) {
    // Beyond all other cells, which are fewer than 2^24 / kNarrowest to each side.
    const std::int64_t cell = (std::int64_t{1} << 32) + std::bit_cast<std::uint32_t>(x);
    return {cell, cell, cell};
  }
  const double place = static_cast<double>(x) * perUnit_ + kShift;
  const std::int64_t own = Floor(place);
  const double within = place - static_cast<double>(own);
  return {own, within < borderland_ ? own - 1 : own, within > 1.0 - borderland_ ? own + 1 : own};
}

WeldGrid::WeldGrid(std::size_t capacity, float squaredDistance)
    : squaredDistance_(squaredDistance),
      reach_(ReachOf(squaredDistance)),
      width_(kWidest),
      axis_(reach_, width_),
      allowance_(kFirstTests) {
  const std::size_t chains = std::bit_ceil(std::max<std::size_t>(capacity, 2));
  hashShift_ = 64 - std::countr_zero(chains);
  heads_.assign(chains, 0);
  slots_.reserve(capacity);
}

std::uint32_t WeldGrid::Add(const Point3& vertex) {
  const auto index = static_cast<std::uint32_t>(slots_.size());
  slots_.push_back({vertex, 0});
  if (!IsFinite(vertex)) return index;
  allowance_ += kTestsPerVertex;
  const Place place = PlaceOf(vertex);
  const std::uint32_t hit = NewestNear(vertex, place);
  Link(index, place);
  if (allowance_ < 0 && width_ > kNarrowest) Narrow();
  return hit == 0 ? index : hit - 1;
}

WeldGrid::Place WeldGrid::PlaceOf(const Point3& vertex) {
  Place place{axis_.CellsAround(vertex.x), axis_.CellsAround(vertex.y), axis_.CellsAround(vertex.z),
              nullptr};
  place.head = &HeadOf(place.x.own, place.y.own, place.z.own);
  return place;
}

std::uint32_t& WeldGrid::HeadOf(std::int64_t x, std::int64_t y, std::int64_t z) {
  std::uint64_t hash = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15u +
                       static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu +
                       static_cast<std::uint64_t>(z) * 0x165667B19E3779F9u;
  hash = (hash ^ (hash >> 32)) * 0xD6E8FEB86659FD93u;
  return heads_[hash >> hashShift_];
}

/// The index + 1 of the newest linked vertex that is near, 0 when there is none.
std::uint32_t WeldGrid::NewestNear(const Point3& vertex, const Place& place) {
  const auto& [xs, ys, zs, head] = place;
  std::uint32_t best = NewestOfChain(*head, vertex, 0);
  for (std::int64_t x = xs.first; x <= xs.last; ++x) {
    for (std::int64_t y = ys.first; y <= ys.last; ++y) {
      for (std::int64_t z = zs.first; z <= zs.last; ++z) {
        if (x == xs.own && y == ys.own && z == zs.own) continue;
        best = NewestOfChain(HeadOf(x, y, z), vertex, best);
      }
    }
  }
  return best;
}

/// The same for one chain, `best` when nothing newer than that is near.
std::uint32_t WeldGrid::NewestOfChain(std::uint32_t head, const Point3& vertex,
                                      std::uint32_t best) {
  for (std::uint32_t candidate = head; candidate > best;) {
    const Slot& slot = slots_[candidate - 1];
    const Point3 offset = slot.position - vertex;
    --allowance_;
    if (DotProd(offset, offset) < squaredDistance_) return candidate;
    candidate = slot.older;
  }
  return best;
}

void WeldGrid::Link(std::uint32_t index, const Place& place) {
  slots_[index].older = *place.head;
  *place.head = index + 1;
}

void WeldGrid::Narrow() {
  width_ /= 2;
  axis_ = Axis(reach_, width_);
  std::ranges::fill(heads_, 0u);
  for (std::uint32_t i = 0; i < slots_.size(); ++i) {
    const Point3& p = slots_[i].position;
    if (IsFinite(p)) Link(i, PlaceOf(p));
  }
  allowance_ = kFirstTests;
}

}  // namespace mapexport
