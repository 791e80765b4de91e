// Makes the scene that the export library writes from a model file.
#pragma once

#include <memory>
#include <string>

#include <assimp/scene.h>

#include "convert/LegalValues.h"
#include "convert/TargetFormat.h"
#include "convert/TargetSpace.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// A root named `name`. Below it, for each group, a node whose meshes are its batches and one named
/// "GROUP collision" with its undrawn faces, each only if there are any. Where the format joins
/// meshes and there are very many batches, those of one material are one mesh. `model` must be
/// valid.
std::unique_ptr<aiScene> TargetScene(const ModelFile& model, const std::string& name,
                                     const TargetFormat& format, const TargetSpace& space,
                                     Changes& changes);

}  // namespace mapexport
