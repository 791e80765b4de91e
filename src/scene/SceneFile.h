// Scene files (.scene.json), which keep a scene bit for bit.
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

/// Reads and checks the scene file at `path`, a regular file or standard input. Throws SceneError
/// for the first defect: with the JSON place of a wrong value, or the line and column where the
/// text is no JSON. Text that is not UTF-8 and a quote that is not closed are reported before any
/// wrong value; indices are checked as soon as what they refer to is known. More than `mostItems`
/// nodes and materials are a defect, too. A file that does not begin as JSON is not read beyond 64
/// KiB. Time and memory are linear in the file's size; its text is freed before this returns.
Scene ReadSceneFile(const std::string& path, std::uint64_t mostItems = UINT64_MAX);

/// Writes `scene` so that reading it back gives the same scene bit for bit (meshes that were shared
/// come back as separate ones). The scene must be one that a file can hold: finite floats, valid
/// UTF-8 without NUL, indices in range, face flags with nothing but the material ID, texture faces
/// exactly where there are texture vertices, at most kMaxSceneDepth levels. Check the stream's
/// state afterwards.
void WriteSceneFile(const Scene& scene, std::ostream& out);

}  // namespace mapexport
