// Converts the host's z-up axes to the y-up axes of most files.
#pragma once

#include "host/Point3.h"

namespace mapexport {

/// The host's z-up coordinates as y-up ones.
inline Point3 YUp(const Point3& p) {
  return {p.x, p.z, -p.y};
}

}  // namespace mapexport
