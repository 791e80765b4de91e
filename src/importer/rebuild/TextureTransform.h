// The UV transform of a foreign material's map.
#pragma once

#include "host/Matrix3.h"
#include "importer/SourceFormat.h"

struct aiUVTransform;

namespace mapexport {

/// The transform from mesh coordinates to the map's, v up, as in the host's maps. The library's
/// rotation is in degrees when it comes from FBX, else in radians.
Matrix3 TextureTransform(const aiUVTransform& stored, SourceFormat format);

}  // namespace mapexport
