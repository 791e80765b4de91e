// Points that are equal bit for bit, kept once.
#include "importer/rebuild/PointTable.h"

#include <bit>

namespace mapexport {
namespace {

constexpr std::size_t kFirstSlots = 64;

std::uint64_t Hash(const Point3& p) {
  constexpr std::uint64_t kMix = 0x9E3779B97F4A7C15;
  std::uint64_t hash = 0;
  for (const float coordinate : {p.x, p.y, p.z}) {
    hash = (hash ^ std::bit_cast<std::uint32_t>(coordinate)) * kMix;
    hash ^= hash >> 32;
  }
  return hash;
}

bool SameBits(const Point3& a, const Point3& b) {
  return std::bit_cast<std::uint32_t>(a.x) == std::bit_cast<std::uint32_t>(b.x) &&
         std::bit_cast<std::uint32_t>(a.y) == std::bit_cast<std::uint32_t>(b.y) &&
         std::bit_cast<std::uint32_t>(a.z) == std::bit_cast<std::uint32_t>(b.z);
}

}  // namespace

std::uint32_t PointTable::Add(const Point3& point) {
  if (slots_.size() < 2 * (points_.size() + 1)) Grow();
  const std::size_t slot = FreeSlotOrMatch(point);
  if (slots_[slot] == 0) {
    points_.push_back(point);
    slots_[slot] = static_cast<std::uint32_t>(points_.size());
  }
  return slots_[slot] - 1;
}

std::size_t PointTable::FreeSlotOrMatch(const Point3& point) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = Hash(point) & mask;
  while (slots_[slot] != 0 && !SameBits(points_[slots_[slot] - 1], point)) slot = (slot + 1) & mask;
  return slot;
}

void PointTable::Grow() {
  slots_.assign(slots_.empty() ? kFirstSlots : 4 * slots_.size(), 0);
  for (std::size_t i = 0; i < points_.size(); ++i) {
    slots_[FreeSlotOrMatch(points_[i])] = static_cast<std::uint32_t>(i + 1);
  }
}

}  // namespace mapexport
