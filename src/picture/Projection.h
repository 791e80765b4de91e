// From the space of the page to the samples of a picture.
#pragma once

#include <cstdint>
#include <optional>

#include "modelreader/ModelFile.h"
#include "picture/Camera.h"
#include "picture/PageSpace.h"
#include "picture/Picture.h"
#include "picture/ScreenTriangle.h"

namespace mapexport {

/// Before the division by `w`: x and y are samples from the picture's middle, y pointing down;
/// z is the depth, from 0 to 1. What is shown has w of at least Projection::LeastW().
struct ClipPoint {
  double x = 0;
  double y = 0;
  double z = 0;
  double w = 1;
  double light = 0;  ///< of a triangle's corner
  double u = 0;      ///< of its texture
  double v = 0;
};

class Projection {
 public:
  /// `size` in samples. Without perspective, what `model` draws fills the picture but for a margin.
  Projection(const ModelFile& model, const PageSpace& space, const Camera& camera,
             PictureSize size);

  ClipPoint Project(const Vector& point) const;
  double LeastW() const { return leastW_; }
  /// Whether the point needs no clipping.
  bool IsWithin(const ClipPoint& point) const {
    const double most = kGuard * point.w;
    return point.w >= leastW_ && point.x >= -most && point.x <= most && point.y >= -most &&
           point.y <= most;
  }
  /// Of a point that needs no clipping.
  ScreenPoint OnScreen(const ClipPoint& point) const;

 private:
  void Fit(const ModelFile& model, const PageSpace& space, PictureSize size);

  Camera camera_;
  double scale_ = 1;  ///< samples per unit; with perspective, at distance 1
  double middleX_ = 0;
  double middleY_ = 0;
  double shiftX_ = 0;  ///< in samples
  double shiftY_ = 0;
  double nearestDepth_ = 0;
  double depthScale_ = 1;
  double leastW_ = 1;
};

}  // namespace mapexport
