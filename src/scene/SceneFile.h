// Scene files (.scene.json): a scene written down bit for bit.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "scene/Scene.h"
#include "system/Ascii.h"

namespace mapexport {

/// Whether the path names a scene file: it ends in ".scene.json", in any case.
inline bool IsSceneFile(std::string_view path) {
  return EndsInAnyCase(path, ".scene.json");
}

/// Reads and checks the scene file at `path`. Throws SceneError with the JSON place of a defect, or
/// the line and column where the text is no JSON; of several defects it is the first one, but
/// broken text that the parser's first pass over the file sees (bytes that are not UTF-8, a quote
/// that is not closed) comes before wrong values, and indices are checked when what they refer to
/// is known. The file must be a regular one or standard input. One that begins as no JSON is not
/// read beyond 64 KiB. More than `mostItems` nodes and materials are a defect, too. Time and memory
/// are linear in the file's size, its text is given back before this returns.
Scene ReadSceneFile(const std::string& path, std::uint64_t mostItems = UINT64_MAX);

/// Writes `scene` so that reading it back gives the same scene bit for bit (meshes that were shared
/// come back as separate ones). The scene must be one that a file can hold: finite floats, valid
/// UTF-8 without NUL, indices in range, face flags with nothing but the material ID, texture faces
/// exactly where there are texture vertices, at most kMaxSceneDepth levels. Look at the stream's
/// state afterwards.
void WriteSceneFile(const Scene& scene, std::ostream& out);

}  // namespace mapexport
