// Makes meshes of the export library from the faces of a model file.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <assimp/mesh.h>

#include "convert/LegalValues.h"
#include "convert/TargetFormat.h"
#include "convert/TargetSpace.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// The faces of batches of one material, given by number, in that order: their normals, texture
/// coordinates and, if the format has them, colours. `leftOut` says for each batch of the group and
/// each of its faces whether it is left out. `base` is the colour by which the target multiplies
/// the corners' colours, if it does. Null when no face is left.
std::unique_ptr<aiMesh> BatchMesh(const ModelGroup& group, std::span<const std::size_t> batches,
                                  const std::vector<std::vector<bool>>& leftOut,
                                  const aiColor4D& base, const TargetFormat& format,
                                  const TargetSpace& space, Changes& changes);

/// The undrawn faces of a group, each with the normal of its plane. Null when there are none.
std::unique_ptr<aiMesh> CollisionMesh(const ModelGroup& group, const TargetFormat& format,
                                      const TargetSpace& space, Changes& changes);

}  // namespace mapexport
