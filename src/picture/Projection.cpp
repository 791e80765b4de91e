#include "picture/Projection.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace mapexport {
namespace {

constexpr double kMargin = 0.94;  ///< of the picture is filled
constexpr double kLeastExtent = 1e-3;

struct Range {
  double least = std::numeric_limits<double>::infinity();
  double most = -std::numeric_limits<double>::infinity();

  void Add(double value) {
    least = std::min(least, value);
    most = std::max(most, value);
  }
  bool IsEmpty() const { return !(least <= most); }
  double Extent() const { return std::max(kLeastExtent, most - least); }
  double Middle() const { return IsEmpty() ? 0 : (least + most) / 2; }
};

bool IsInReach(const Vector& at) {
  return std::max({std::abs(at.x), std::abs(at.y), std::abs(at.z)}) <= kReach;
}

/// Where the drawn vertices are, those in reach only, and the depths of all that are shown.
struct Extents {
  Range across;
  Range up;
  Range depth;

  void Add(const Camera& camera, const Vector& at) {
    depth.Add(-Dot(camera.back, at));
    if (!IsInReach(at)) return;
    across.Add(Dot(camera.right, at));
    up.Add(Dot(camera.up, at));
  }
};

std::int32_t ToPlace(double samples) {
  return static_cast<std::int32_t>(std::floor(samples * kPlacesPerSample + 0.5));
}

}  // namespace

Projection::Projection(const ModelFile& model, const PageSpace& space, const Camera& camera,
                       PictureSize size)
    : camera_(camera), middleX_(size.width / 2.0), middleY_(size.height / 2.0) {
  if (camera.hasPerspective) {
    scale_ = middleY_ / camera.tangent;
    leastW_ = camera.nearest;
  } else {
    Fit(model, space, size);
  }
}

void Projection::Fit(const ModelFile& model, const PageSpace& space, PictureSize size) {
  Extents extents;
  std::vector<bool> drawn;
  for (const ModelGroup& group : model.groups) {
    drawn.assign(group.vertices.size(), false);
    for (const ModelBatch& batch : group.batches) {
      for (const ModelBatchFace& face : batch.faces) {
        for (const std::uint16_t vertex : face.vertices) {
          if (vertex < drawn.size()) drawn[vertex] = true;
        }
      }
    }
    for (std::size_t i = 0; i < drawn.size(); ++i) {
      if (!drawn[i]) continue;
      if (const auto at = space.Place(group.vertices[i])) extents.Add(camera_, *at);
    }
  }
  if (extents.depth.IsEmpty()) return;
  nearestDepth_ = extents.depth.least;
  depthScale_ = 1 / extents.depth.Extent();
  scale_ =
      kMargin * std::min(size.width / extents.across.Extent(), size.height / extents.up.Extent());
  shiftX_ = -extents.across.Middle() * scale_;
  shiftY_ = extents.up.Middle() * scale_;
}

ClipPoint Projection::Project(const Vector& point) const {
  const Vector from = camera_.hasPerspective ? point + camera_.eye * -1 : point;
  const double ahead = -Dot(camera_.back, from);
  ClipPoint clip{.x = Dot(camera_.right, from) * scale_ + shiftX_,
                 .y = -Dot(camera_.up, from) * scale_ + shiftY_};
  if (camera_.hasPerspective) {
    clip.z = ahead - leastW_;
    clip.w = ahead;
  } else {
    clip.z = (ahead - nearestDepth_) * depthScale_;
  }
  return clip;
}

ScreenPoint Projection::OnScreen(const ClipPoint& point) const {
  // Clipping rounds, so its points may be outside by a little.
  const auto guarded = [](double at) { return std::clamp<double>(at, -kGuard, kGuard); };
  const double depth = std::clamp(point.z / point.w, 0.0, 1.0) * kFarthestDepth;
  return {ToPlace(guarded(point.x / point.w) + middleX_),
          ToPlace(guarded(point.y / point.w) + middleY_), static_cast<std::int32_t>(depth)};
}

}  // namespace mapexport
