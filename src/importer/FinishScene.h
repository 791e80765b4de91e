// The last step of every import, for all formats.
#pragma once

#include <cstdint>

namespace mapexport {

struct ImportedScene;
struct LeftOut;
struct Scene;

/// Replaces control characters in names by blanks, and drops the materials that no node shows. Adds
/// remarks about both, about words that were probably meant to be keywords, different materials
/// with the same name (exporters keep the first), a scene without triangles, and everything that is
/// left out. Cost: linear in the scene.
void FinishScene(ImportedScene& imported, LeftOut& leftOut);

/// Replaces each control character (IsControlCode) by a blank in the names of nodes and materials
/// and in the file names of textures, which reach logs, terminals and model files. User properties
/// keep theirs, as they have several lines. Returns the number of replaced characters. Cost:
/// linear.
std::uint64_t BlankControlCharacters(Scene& scene);

}  // namespace mapexport
