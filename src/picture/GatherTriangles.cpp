#include "picture/GatherTriangles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <numbers>
#include <optional>

namespace mapexport {
namespace {

/// The light of the page of `view`: from above and below, and from beside the camera.
class Light {
 public:
  explicit Light(const Camera& camera)
      : sun_(Normalised(camera.right * -0.6 + camera.up * 0.6 + camera.back * 2)) {}

  std::uint16_t On(const Vector& normal) const {
    const double sky = kGround + (1 - kGround) * (0.5 + 0.5 * normal.y);
    const double light = kSky * sky + kSun * std::max(0.0, Dot(sun_, normal));
    return static_cast<std::uint16_t>(std::floor(light * kFullLight));
  }

 private:
  // The lights of viewer/src/scene.js, which a surface spreads in all directions.
  static constexpr double kGround = 138.0 / 255;  ///< of the sky's light comes from below
  static constexpr double kSky = 2.1 / std::numbers::pi;
  static constexpr double kSun = 1.25 / std::numbers::pi;
  Vector sun_;
};

struct Vertex {
  enum class State { kNotShown, kWithin, kToClip };

  State state = State::kNotShown;
  ScreenPoint point;
};

/// The part of a polygon where `inside` is at least 0. A cut edge has the same end from both sides.
template <typename Inside>
void CutPolygon(std::vector<ClipPoint>& polygon, const Inside& inside) {
  std::vector<ClipPoint> rest;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const ClipPoint& from = polygon[i];
    const ClipPoint& to = polygon[(i + 1) % polygon.size()];
    const double atFrom = inside(from);
    const double atTo = inside(to);
    if (atFrom >= 0) rest.push_back(from);
    if ((atFrom >= 0) == (atTo >= 0)) continue;
    const bool leaves = atFrom >= 0;
    const ClipPoint& in = leaves ? from : to;
    const ClipPoint& out = leaves ? to : from;
    const double share = leaves ? atFrom / (atFrom - atTo) : atTo / (atTo - atFrom);
    const auto between = [share](double a, double b) { return a + (b - a) * share; };
    rest.push_back({between(in.x, out.x), between(in.y, out.y), between(in.z, out.z),
                    between(in.w, out.w), between(in.light, out.light), between(in.u, out.u),
                    between(in.v, out.v)});
  }
  polygon = std::move(rest);
}

class Gatherer {
 public:
  Gatherer(const ModelFile& model, const PageSpace& space, const Camera& camera,
           const Projection& projection, const FaceColours& colours,
           std::vector<TexturedTriangle>& textured)
      : space_(space), projection_(projection), light_(camera), textured_(textured) {
    for (std::size_t g = 0; g < model.groups.size(); ++g) {
      const ModelGroup& group = model.groups[g];
      PlaceVertices(group);
      for (std::size_t b = 0; b < group.batches.size(); ++b) {
        const ModelBatch& batch = group.batches[b];
        SetTexture(colours.TextureOf(batch));
        AddBatch(group, batch, colours.OfBatch(g, b));
      }
    }
  }

  std::vector<ScreenTriangle> Take() { return std::move(triangles_); }

 private:
  void PlaceVertices(const ModelGroup& group) {
    vertices_.assign(group.vertices.size(), {});
    for (std::size_t i = 0; i < vertices_.size(); ++i) {
      const std::optional<Vector> at = space_.Place(group.vertices[i]);
      if (!at) continue;
      const ClipPoint clip = projection_.Project(*at);
      const bool within = projection_.IsWithin(clip);
      vertices_[i].state = within ? Vertex::State::kWithin : Vertex::State::kToClip;
      if (within) vertices_[i].point = projection_.OnScreen(clip);
    }
  }

  void AddBatch(const ModelGroup& group, const ModelBatch& batch, const std::vector<Rgb>& colours) {
    std::vector<std::optional<std::uint16_t>> corners;
    corners.reserve(batch.corners.size());
    for (const ModelCorner& corner : batch.corners) {
      const Vector normal = space_.Outward(corner.normal);
      corners.emplace_back();
      if (Dot(normal, normal) > 0) corners.back() = light_.On(normal);
    }
    for (std::size_t f = 0; f < batch.faces.size(); ++f) {
      const ModelBatchFace& face = batch.faces[f];
      ScreenTriangle triangle;
      bool clip = false;
      bool shown = true;
      for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t at = face.vertices[k];
        // Indices into lists that are too long are cut, so any index may be in a face.
        const Vertex vertex = at < vertices_.size() ? vertices_[at] : Vertex{};
        shown = shown && vertex.state != Vertex::State::kNotShown;
        clip = clip || vertex.state == Vertex::State::kToClip;
        triangle.corners[k] = vertex.point;
      }
      if (!shown) continue;
      if (!clip && !IsFront(triangle)) continue;
      triangle.colour = colours[std::min(f, colours.size() - 1)];
      for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t at = face.corners[k];
        triangle.light[k] = at < corners.size() && corners[at]
                                ? *corners[at]
                                : light_.On(space_.Outward(face.plane.normal));
      }
      if (clip || texture_ != nullptr) {
        AddClipped(group, batch, face, triangle);
      } else {
        triangles_.push_back(triangle);
      }
    }
  }

  /// The exporter reversed the corners, and y points down.
  static bool IsFront(const ScreenTriangle& triangle) {
    const auto& [a, b, c] = triangle.corners;
    return DoubleArea(a, b, c) > 0;
  }

  /// For the batch that comes next.
  void SetTexture(const TextureLevels* levels) {
    texture_ = levels;
    if (levels == nullptr) return;
    const auto [known, isNew] = haveAlphas_.try_emplace(levels, false);
    const std::vector<std::uint8_t>& pixels = levels->front().pixels;
    for (std::size_t i = 3; isNew && i < pixels.size(); i += 4) known->second |= pixels[i] != 255;
    transparent_ = known->second;
  }

  /// Gives `part` the texture, from three points of the polygon.
  void AddTextured(ScreenTriangle part, const std::array<std::size_t, 3>& of) {
    if (texture_ != nullptr) {
      TexturedTriangle textured{texture_, {}};
      for (std::size_t k = 0; k < 3; ++k) {
        const ClipPoint& point = polygon_[of[k]];
        textured.corners[k] = {point.u / point.w, point.v / point.w, 1 / point.w};
      }
      part.textured = static_cast<std::uint32_t>(textured_.size());
      part.transparent = transparent_;
      textured_.push_back(textured);
    }
    triangles_.push_back(part);
  }

  void AddClipped(const ModelGroup& group, const ModelBatch& batch, const ModelBatchFace& face,
                  const ScreenTriangle& whole) {
    polygon_.clear();
    for (std::size_t k = 0; k < 3; ++k) {
      polygon_.push_back(projection_.Project(*space_.Place(group.vertices[face.vertices[k]])));
      polygon_.back().light = whole.light[k];
      const std::size_t corner = face.corners[k];
      if (corner < batch.corners.size()) {
        polygon_.back().u = batch.corners[corner].u;
        polygon_.back().v = batch.corners[corner].v;
      }
    }
    const double leastW = projection_.LeastW();
    CutPolygon(polygon_, [leastW](const ClipPoint& p) { return p.w - leastW; });
    CutPolygon(polygon_, [](const ClipPoint& p) { return kGuard * p.w - p.x; });
    CutPolygon(polygon_, [](const ClipPoint& p) { return kGuard * p.w + p.x; });
    CutPolygon(polygon_, [](const ClipPoint& p) { return kGuard * p.w - p.y; });
    CutPolygon(polygon_, [](const ClipPoint& p) { return kGuard * p.w + p.y; });
    ScreenTriangle part = whole;
    for (std::size_t i = 2; i < polygon_.size(); ++i) {
      const std::array<std::size_t, 3> of{0, i - 1, i};
      for (std::size_t k = 0; k < 3; ++k) {
        part.corners[k] = projection_.OnScreen(polygon_[of[k]]);
        part.light[k] = static_cast<std::uint16_t>(polygon_[of[k]].light);
      }
      if (IsFront(part)) AddTextured(part, of);
    }
  }

  const PageSpace& space_;
  const Projection& projection_;
  Light light_;
  std::vector<Vertex> vertices_;
  std::vector<ClipPoint> polygon_;
  const TextureLevels* texture_ = nullptr;
  bool transparent_ = false;
  std::map<const TextureLevels*, bool> haveAlphas_;  ///< many batches can have one texture
  std::vector<TexturedTriangle>& textured_;
  std::vector<ScreenTriangle> triangles_;
};

/// The nearest first, by their nearest corners; equal ones stay in order.
std::vector<ScreenTriangle> Sorted(const std::vector<ScreenTriangle>& triangles) {
  struct Key {
    std::uint32_t depth;
    std::uint32_t index;
  };
  std::vector<Key> keys;
  keys.reserve(triangles.size());
  for (const ScreenTriangle& triangle : triangles) {
    const auto& [a, b, c] = triangle.corners;
    keys.push_back({static_cast<std::uint32_t>(std::min({a.depth, b.depth, c.depth})),
                    static_cast<std::uint32_t>(keys.size())});
  }
  constexpr unsigned kDigitBits = 10;
  constexpr unsigned kDigits = 3;
  static_assert(kFarthestDepth < 1 << (kDigits * kDigitBits));
  std::vector<Key> sorted(keys.size());
  for (unsigned shift = 0; shift < kDigits * kDigitBits; shift += kDigitBits) {
    const auto digit = [shift](const Key& key) {
      return (key.depth >> shift) & ((1U << kDigitBits) - 1);
    };
    std::array<std::size_t, (1U << kDigitBits) + 1> starts{};
    for (const Key& key : keys) ++starts[digit(key) + 1];
    for (std::size_t i = 1; i < starts.size(); ++i) starts[i] += starts[i - 1];
    for (const Key& key : keys) sorted[starts[digit(key)]++] = key;
    std::swap(keys, sorted);
  }
  std::vector<ScreenTriangle> result;
  result.reserve(keys.size());
  for (const Key& key : keys) result.push_back(triangles[key.index]);
  return result;
}

}  // namespace

std::vector<ScreenTriangle> GatherTriangles(const ModelFile& model, const PageSpace& space,
                                            const Camera& camera, const Projection& projection,
                                            const FaceColours& colours,
                                            std::vector<TexturedTriangle>& textured) {
  return Sorted(Gatherer(model, space, camera, projection, colours, textured).Take());
}

}  // namespace mapexport
