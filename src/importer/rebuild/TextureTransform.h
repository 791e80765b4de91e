// The UV transform of a foreign material's map.
#pragma once

#include "host/Matrix3.h"
#include "importer/SourceFormat.h"

struct aiUVTransform;

namespace mapexport {

/// The transform from mesh coordinates to the map's, v up, as in the host's maps. The meaning of
/// the library's numbers depends on the format: rotations are in degrees from FBX, in radians
/// otherwise; from glTF 2 all numbers are converted, and the file's offset, rotation and scale
/// about the upper left corner are recovered here.
Matrix3 TextureTransform(const aiUVTransform& stored, SourceFormat format);

}  // namespace mapexport
