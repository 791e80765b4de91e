// Makes meshes of the export library from the faces of a model file.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <assimp/mesh.h>

#include "convert/LegalValues.h"
#include "convert/TargetFormat.h"
#include "convert/TargetSpace.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// The faces of a batch except those in `leftOut`, with their normals, texture coordinates and, if
/// the format has them, colours. `base` is the colour by which the target multiplies the corners'
/// colours, if it does. Null when no face is left.
std::unique_ptr<aiMesh> BatchMesh(const ModelGroup& group, const ModelBatch& batch,
                                  const std::vector<bool>& leftOut, const aiColor4D& base,
                                  const TargetFormat& format, const TargetSpace& space,
                                  Changes& changes);

/// The undrawn faces of a group, each with the normal of its plane. Null when there are none.
std::unique_ptr<aiMesh> CollisionMesh(const ModelGroup& group, const TargetFormat& format,
                                      const TargetSpace& space, Changes& changes);

}  // namespace mapexport
