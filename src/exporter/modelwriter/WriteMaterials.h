// The materials list of a model file.
#pragma once

#include "exporter/materials/MaterialsList.h"
#include "exporter/modelwriter/BinaryWriter.h"

namespace mapexport {

/// Writes the number of materials, then one sized record per material in list order. The UV
/// transform and the transparency mark serve the export alone and are not written.
void WriteMaterials(const MaterialsList& materials, BinaryWriter& out);

}  // namespace mapexport
