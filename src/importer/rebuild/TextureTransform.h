// The UV transform of a foreign material's map.
#pragma once

#include "host/Matrix3.h"

struct aiUVTransform;

namespace mapexport {

struct LibraryScene;

/// The transform from mesh coordinates to the map's, v up, as in the host's maps. The library's
/// rotation is in degrees when it comes from FBX, else in radians. Blender scales and turns about
/// the origin and writes into FBX the reciprocal of its scale and its negated rotation in radians.
Matrix3 TextureTransform(const aiUVTransform& stored, const LibraryScene& source);

}  // namespace mapexport
