// The scene that the export library writes, out of a model file.
#pragma once

#include <memory>
#include <string>

#include <assimp/scene.h>

#include "convert/LegalValues.h"
#include "convert/TargetFormat.h"
#include "convert/TargetSpace.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// A root called `name`, and below it, for each group that has such, a node whose meshes are its
/// batches and one called "GROUP collision" with its undrawn faces. `model` must be sound.
std::unique_ptr<aiScene> TargetScene(const ModelFile& model, const std::string& name,
                                     const TargetFormat& format, const TargetSpace& space,
                                     Changes& changes);

}  // namespace mapexport
