// Finds the reversed copies that the export makes of the faces of two-sided materials.
#pragma once

#include <vector>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// For each batch of `group` and each of its faces, whether it is such a copy: the group has a face
/// of the same two-sided material with the same vertices in reverse order, and this face points
/// away from the corner normals, which the two share. A target that shows both sides of a material
/// must not get both faces.
std::vector<std::vector<bool>> ReversedCopies(const ModelFile& model, const ModelGroup& group);

}  // namespace mapexport
