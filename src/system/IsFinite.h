// Whether a point can be used.
#pragma once

#include <cmath>

#include "host/Point3.h"

namespace mapexport {

inline bool IsFinite(const Point3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

}  // namespace mapexport
