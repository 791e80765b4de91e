// Benchmarks of other ways to do parts of an export's work, and of the least work that they take.
#pragma once

#include <string>

#include "LevelStages.h"

namespace mapexport {

/// Registers, on the same triangles as the stages:
/// - "post-processing" of the import library: triangulation, smooth normals, joining of equal
///   vertices, on what its own reader makes of the level's .obj file (every corner a vertex of its
///   own, no normals);
/// - "vertex remap" of meshoptimizer: equal corners of 12 floats;
/// - "hash inserts", one for each vertex, and the "representatives" that welding finds for them;
/// - "write()" of a whole model file in one go.
void RegisterRivals(const LevelStages& stages, const std::string& objFile);

}  // namespace mapexport
