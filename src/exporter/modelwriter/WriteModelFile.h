// The framing of a model file, and its materials.
#pragma once

#include <cstddef>

#include "exporter/materials/MaterialsList.h"
#include "exporter/modelwriter/BinaryWriter.h"

namespace mapexport {

/// Writes the number of materials, then one sized record per material in list order. The UV
/// transform and the transparency mark serve the export alone and are not written.
void WriteMaterials(const MaterialsList& materials, BinaryWriter& out);

/// Begins a model file: writes the start tag, the material chunk and the head of the geometry
/// chunk. `groupCount` group records follow, then EndModelFile with what this returns, the size of
/// the geometry chunk.
SizeField BeginModelFile(const MaterialsList& materials, std::size_t groupCount, BinaryWriter& out);

/// Fills in the size of the geometry chunk and writes the end tag.
void EndModelFile(SizeField geometrySize, BinaryWriter& out);

}  // namespace mapexport
