#include "geometry/RemoveDegenerateFaces.h"

#include <vector>

#include "geometry/RemoveFaces.h"

namespace mapexport {

void RemoveDegenerateFaces(GeometryGroup& group) {
  std::vector<bool> degenerate;
  degenerate.reserve(group.faces.size());
  for (const GroupFace& face : group.faces) {
    const auto& v = face.v;
    degenerate.push_back(v[0] == v[1] || v[1] == v[2] || v[2] == v[0]);
  }
  RemoveFaces(group, degenerate);
}

}  // namespace mapexport
