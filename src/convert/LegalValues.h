// Makes the values of a model file valid in other formats, and counts the changes.
#pragma once

#include <cstdint>

#include <assimp/color4.h>
#include <assimp/vector2.h>
#include <assimp/vector3.h>

namespace mapexport {

/// What could not be kept as it is.
struct Changes {
  std::uint64_t colours = 0;             ///< had a part below 0, above 1 or not a number
  std::uint64_t normals = 0;             ///< had no direction; replaced by the face's normal
  std::uint64_t textureCoordinates = 0;  ///< were not finite; replaced by 0
  std::uint64_t lostFaces = 0;           ///< have a corner that is not finite, and are left out
  std::uint64_t copies = 0;              ///< reversed copies of faces, left out
  std::uint64_t collisionFaces = 0;      ///< left out, because the format has only one mesh
};

aiColor4D LegalColour(const aiColor4D& colour, Changes& changes);

/// `normal` with length 1; without a direction `ofFace`, or else straight up.
aiVector3D LegalNormal(const aiVector3D& normal, const aiVector3D& ofFace, bool yUp,
                       Changes& changes);

aiVector2D LegalTexture(const aiVector2D& texture, Changes& changes);

}  // namespace mapexport
