#include "geometry/WeldGrid.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace mapexport {
namespace {

// Widths of a cell in reaches. The narrowest still lets a query touch only two cells per axis.
constexpr int kWidest = 16;
constexpr int kNarrowest = 2;

/// Round coordinates sit on the borders of a grid through the origin; this fraction of a cell moves
/// it away.
constexpr double kShift = 0.37;

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
    : reach_(static_cast<double>(reach)), perUnit_(1.0 / (reach_ * widthInReaches)) {
  // The least spacing of floats from 2^e on, and of those just below it, is 2^(e - 24).
  int exponent = 0;
  std::frexp(reach_, &exponent);
  farOut_ = std::ldexp(1.0, exponent + 24);
}

std::int64_t WeldGrid::Axis::CellOf(double x) const {
  const double magnitude = std::fabs(x);
  if (magnitude < farOut_) return Floor(x * perUnit_ + kShift);
  const std::int64_t floatsBeyond =
      std::int64_t{std::bit_cast<std::uint32_t>(static_cast<float>(magnitude))} -
      std::bit_cast<std::uint32_t>(static_cast<float>(farOut_));
  return x > 0.0 ? Floor(farOut_ * perUnit_ + kShift) + 1 + floatsBeyond
                 : Floor(-farOut_ * perUnit_ + kShift) - 1 - floatsBeyond;
}

WeldGrid::Axis::Range WeldGrid::Axis::CellsAround(float x) const {
  const double centre = static_cast<double>(x);
  const std::int64_t own = CellOf(centre);
  if (std::fabs(centre) >= farOut_) return {own, own, own};
  return {own, CellOf(centre - reach_), CellOf(centre + reach_)};
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

WeldGrid::Place WeldGrid::PlaceOf(const Point3& vertex) const {
  return {axis_.CellsAround(vertex.x), axis_.CellsAround(vertex.y), axis_.CellsAround(vertex.z)};
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
  const auto& [xs, ys, zs] = place;
  std::uint32_t best = NewestOfChain(HeadOf(xs.own, ys.own, zs.own), vertex, 0);
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
  std::uint32_t& head = HeadOf(place.x.own, place.y.own, place.z.own);
  slots_[index].older = head;
  head = index + 1;
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
