// Makes the values of a model file such as other formats allow them, and counts what it changes.
#pragma once

#include <cstdint>

#include <assimp/color4.h>
#include <assimp/vector2.h>
#include <assimp/vector3.h>

namespace mapexport {

/// What could not be taken over as it stands.
struct Changes {
  std::uint64_t colours = 0;             ///< had a part below 0, above 1 or that is no number
  std::uint64_t normals = 0;             ///< had no direction; the face's own replaces them
  std::uint64_t textureCoordinates = 0;  ///< were not finite; 0 replaces them
  std::uint64_t lostFaces = 0;           ///< have a corner that is not finite, and are left out
  std::uint64_t copies = 0;              ///< reversed copies of faces, left out
  std::uint64_t collisionFaces = 0;      ///< left out, since the format has one mesh only
};

aiColor4D LegalColour(const aiColor4D& colour, Changes& changes);

/// `normal` with the length 1, else `ofFace`, else straight up.
aiVector3D LegalNormal(const aiVector3D& normal, const aiVector3D& ofFace, bool yUp,
                       Changes& changes);

aiVector2D LegalTexture(const aiVector2D& texture, Changes& changes);

}  // namespace mapexport
