#include "exporter/geometry/MatchingUses.h"

#include <algorithm>

namespace mapexport {
namespace {

/// Up to this many attributes at a vertex every pair is compared.
constexpr std::size_t kFewUses = 64;

/// A face corner: its attribute in the upper half, its face in the lower one. So sorted corners are
/// grouped by attribute, and each attribute's faces ascend.
using Corner = std::uint64_t;

std::uint32_t AttributeOf(Corner corner) {
  return static_cast<std::uint32_t>(corner >> 32);
}

std::uint32_t FaceOf(Corner corner) {
  return static_cast<std::uint32_t>(corner);
}

/// The corners of all faces, vertex by vertex.
struct CornerLists {
  std::vector<Corner> corners;
  std::vector<std::uint32_t> firsts;  ///< per vertex its first corner, then their count

  explicit CornerLists(const GeometryGroup& group);
};

CornerLists::CornerLists(const GeometryGroup& group)
    : corners(3 * group.faces.size()), firsts(group.vertices.size() + 1, 0) {
  for (const GroupFace& face : group.faces) {
    for (const std::uint32_t v : face.v) ++firsts[v];
  }
  // Turns the counts into the ends of the lists. Filling the lists backwards turns the ends into
  // their starts.
  std::uint32_t end = 0;
  for (std::uint32_t& count : firsts) {
    end += count;
    count = end;
  }
  for (auto f = static_cast<std::uint32_t>(group.faces.size()); f-- > 0;) {
    const GroupFace& face = group.faces[f];
    for (std::size_t k = 0; k < 3; ++k) {
      corners[--firsts[face.v[k]]] = Corner{face.a[k]} << 32 | f;
    }
  }
}

/// The attributes used at one vertex, and which of them match another one used there.
struct VertexUses {
  /// One per attribute, ascending. First and end face are positions in the vertex's corners here.
  std::vector<AttributeUse> uses;
  std::vector<bool> matched;

  void Collect(std::span<const Corner> sorted);
  /// Fills `matched`; returns whether any entry is true.
  bool Match(std::span<const VertexAttribute> attributes);

 private:
  bool MatchPairs(std::span<const VertexAttribute> attributes);
  bool MatchMany(std::span<const VertexAttribute> attributes);
};

void VertexUses::Collect(std::span<const Corner> sorted) {
  uses.clear();
  for (std::uint32_t i = 0; i < sorted.size(); ++i) {
    const std::uint32_t attribute = AttributeOf(sorted[i]);
    if (uses.empty() || uses.back().attribute != attribute) uses.push_back({attribute, i, i});
    uses.back().endFace = i + 1;
  }
}

bool VertexUses::Match(std::span<const VertexAttribute> attributes) {
  matched.assign(uses.size(), false);
  return uses.size() <= kFewUses ? MatchPairs(attributes) : MatchMany(attributes);
}

bool VertexUses::MatchPairs(std::span<const VertexAttribute> attributes) {
  bool any = false;
  for (std::size_t i = 1; i < uses.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (AttributesMatch(attributes[uses[i].attribute], attributes[uses[j].attribute])) {
        matched[i] = matched[j] = any = true;
      }
    }
  }
  return any;
}

/// The upward pass finds the uses with a match before them, the downward pass those with a match
/// after them.
bool VertexUses::MatchMany(std::span<const VertexAttribute> attributes) {
  bool any = false;
  std::vector<VertexAttribute> passed;
  passed.reserve(uses.size());
  for (const bool upwards : {true, false}) {
    passed.clear();
    AttributeIndex index;
    for (std::size_t step = 0; step < uses.size(); ++step) {
      const std::size_t i = upwards ? step : uses.size() - 1 - step;
      const VertexAttribute& attribute = attributes[uses[i].attribute];
      const AttributePlace place = index.PlaceOf(attribute.position);
      if (index.FindFirst(attribute, place, passed) != AttributeIndex::kNone) {
        matched[i] = any = true;
      }
      passed.push_back(attribute);
      index.Update(passed);
    }
  }
  return any;
}

}  // namespace

MatchingUses FindMatchingUses(const GeometryGroup& group) {
  CornerLists lists(group);
  MatchingUses result;
  result.firstUses.reserve(lists.firsts.size());
  VertexUses atVertex;
  for (std::size_t v = 0; v < group.vertices.size(); ++v) {
    result.firstUses.push_back(static_cast<std::uint32_t>(result.uses.size()));
    const auto corners =
        std::span(lists.corners).subspan(lists.firsts[v], lists.firsts[v + 1] - lists.firsts[v]);
    std::ranges::sort(corners);
    atVertex.Collect(corners);
    if (!atVertex.Match({group.attributes.data(), group.attributes.size()})) continue;
    for (std::size_t i = 0; i < atVertex.uses.size(); ++i) {
      if (!atVertex.matched[i]) continue;
      AttributeUse use = atVertex.uses[i];
      const auto users = corners.subspan(use.firstFace, use.endFace - use.firstFace);
      use.firstFace = static_cast<std::uint32_t>(result.faces.size());
      for (const Corner corner : users) result.faces.push_back(FaceOf(corner));
      use.endFace = static_cast<std::uint32_t>(result.faces.size());
      result.uses.push_back(use);
    }
  }
  result.firstUses.push_back(static_cast<std::uint32_t>(result.uses.size()));
  return result;
}

}  // namespace mapexport
