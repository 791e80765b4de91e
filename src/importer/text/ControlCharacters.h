// Control characters in the names of a scene.
#pragma once

#include <cstdint>

namespace mapexport {

struct Scene;

/// Makes a blank of each control character (below U+0020, U+007F to U+009F) in the names of nodes
/// and materials and in the file names of textures, which reach logs, terminals and model files.
/// User properties are left alone: they are lines. Returns how many characters these were. Cost:
/// linear in the names.
std::uint64_t BlankControlCharacters(Scene& scene);

}  // namespace mapexport
