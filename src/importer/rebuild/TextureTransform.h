// The UV transform of a foreign material's map.
#pragma once

#include "host/Matrix3.h"
#include "importer/SourceFormat.h"

struct aiUVTransform;

namespace mapexport {

/// What turns mesh coordinates into the map's, v up, as the host's maps hold it. The library's
/// numbers mean different things by format: degrees from FBX, radians else; from glTF 2 they are a
/// rewriting of the file's offset, rotation and scale about the upper left corner, which are
/// recovered here.
Matrix3 TextureTransform(const aiUVTransform& stored, SourceFormat format);

}  // namespace mapexport
