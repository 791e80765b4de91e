#include "exporter/geometry/RemoveDegenerateFaces.h"

#include <vector>

#include "exporter/geometry/RemoveFaces.h"

namespace mapexport {

void RemoveDegenerateFaces(GeometryGroup& group) {
  std::vector<bool> degenerate;
  degenerate.reserve(group.faces.size());
  for (const GroupFace& face : group.faces) degenerate.push_back(IsDegenerate(face));
  RemoveFaces(group, degenerate);
}

}  // namespace mapexport
