// What is done to every foreign scene at last, whatever it was read from.
#pragma once

#include <cstdint>

namespace mapexport {

struct ImportedScene;
struct LeftOut;
struct Scene;

/// Replaces control characters in names by blanks. Drops the materials that no node shows and
/// counts them. Remarks on such names, on words that were probably meant to be keywords, on
/// different materials with one name, of which the exporters keep the first, on a scene without
/// triangles, and on all that is left out. Cost: linear in the scene.
void FinishScene(ImportedScene& imported, LeftOut& leftOut);

/// Makes a blank of each control character (IsControlCode) in the names of nodes and materials and
/// in the file names of textures, which reach logs, terminals and model files. User properties are
/// left alone: they are lines. Returns how many characters these were. Cost: linear in the names.
std::uint64_t BlankControlCharacters(Scene& scene);

}  // namespace mapexport
