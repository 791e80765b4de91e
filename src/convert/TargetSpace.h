// From the coordinates of a model file back to those of a target format.
#pragma once

#include <cstdint>

#include <assimp/vector2.h>
#include <assimp/vector3.h>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// How the export turned the scene. The numbers are those of the export options; any other number
/// left it unturned.
struct ExportedSpace {
  std::int32_t coordinates = 0;
  std::int32_t textureCoordinates = 0;
};

/// Undoes what the export did to the host's right-handed, z-up world, then turns and scales that
/// world for the target.
///
/// The export reverses the corners of every triangle and computes normals from the reversed ones.
/// Where the coordinate system mirrors (0 and 3), the mirror turns these normals outward again;
/// where it does not (1 and 2) they point inward. So in the host's world the corners must be
/// reversed for every system, and normals negated for 1 and 2.
class TargetSpace {
 public:
  /// `yUp`: y points up in the target, else z. `hostUnits`: host units per unit of the target.
  TargetSpace(const ExportedSpace& exported, bool yUp, double hostUnits)
      : exported_(exported), yUp_(yUp), hostUnits_(hostUnits) {}

  aiVector3D Position(const ModelPoint& point) const;
  /// A normal. It points outward once the corners are reversed.
  aiVector3D Normal(const ModelPoint& normal) const;
  /// Texture coordinates whose v points up.
  aiVector2D Texture(float u, float v) const;

 private:
  aiVector3D Turned(const ModelPoint& point) const;

  ExportedSpace exported_;
  bool yUp_;
  double hostUnits_;
};

}  // namespace mapexport
