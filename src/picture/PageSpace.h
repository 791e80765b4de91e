// The space in which the page of `view` shows a model: y up, right-handed, about 100 units large,
// its middle at the origin. viewer/src/coordinates.js has the same.
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "modelreader/ModelFile.h"
#include "picture/Vector.h"

namespace mapexport {

/// A drawn level is within this distance of the origin on each axis, except for far outliers.
inline constexpr double kReach = 150;

class PageSpace {
 public:
  /// `coordinateSystem`: 0 to 3, the one that the model is in.
  PageSpace(const ModelFile& model, int coordinateSystem);

  /// Nothing for a point that is not finite or too far away to be shown.
  std::optional<Vector> Place(const ModelPoint& point) const;

  /// Of a place in the file's axes and units.
  std::optional<Vector> Place(const std::array<double, 3>& file) const;
  /// A length of the file.
  double Length(double length) const { return length * scale_; }

  /// The extents of the model, without far outliers, in the file's units along the page's axes.
  std::array<double, 3> FileSize() const;

  /// The direction in which a face with that normal looks; null for a normal without direction.
  Vector Outward(const ModelPoint& normal) const;

 private:
  struct System;
  static const System& SystemOf(int index);

  const System& system_;
  std::array<double, 3> extents_{};  ///< in the file's axes
  std::array<double, 3> centre_{};   ///< in the file's axes
  double scale_ = 1;
};

}  // namespace mapexport
