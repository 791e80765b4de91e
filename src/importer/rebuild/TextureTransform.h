// The UV transform of a foreign material's map.
#pragma once

#include "host/Matrix3.h"
#include "importer/SourceFormat.h"

struct aiUVTransform;

namespace mapexport {

/// What turns mesh coordinates into the map's, v up, as the host's maps hold it. The library's
/// rotation is in degrees when it comes from FBX, else in radians.
Matrix3 TextureTransform(const aiUVTransform& stored, SourceFormat format);

}  // namespace mapexport
