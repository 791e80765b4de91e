// Scene files (.scene.json, .scene.bin), which keep a scene bit for bit.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "scene/Scene.h"
#include "system/Ascii.h"
#include "system/Descriptor.h"

namespace mapexport {

/// Whether the path names a scene file: it ends in ".scene.json" or ".scene.bin", in any case.
inline bool IsSceneFile(std::string_view path) {
  return EndsInAnyCase(path, ".scene.json") || EndsInAnyCase(path, ".scene.bin");
}

/// Whether the path names a scene file in binary form.
inline bool IsBinarySceneFile(std::string_view path) {
  return EndsInAnyCase(path, ".scene.bin");
}

/// What a scene file that nobody vouches for may hold.
struct SceneLimits {
  std::uint64_t mostItems = UINT64_MAX;  ///< nodes and materials together
  /// Bytes of the lists of meshes in binary form, where a shared one counts for each node.
  std::uint64_t mostBytes = UINT64_MAX;
  std::uint64_t mostJson = UINT64_MAX;  ///< bytes of the JSON in binary form
};

/// Reads and checks the scene file at `path`, a regular file or (as text) standard input. Throws
/// SceneError for the first defect: with the JSON place of a wrong value, or the line and column
/// where the text is no JSON. Text that is not UTF-8 and a quote that is not closed are reported
/// before any wrong value; indices are checked as soon as what they refer to is known. A file of
/// text that does not begin as JSON is not read beyond 64 KiB. Time and memory are linear in the
/// file's size; its text is freed before this returns.
Scene ReadSceneFile(const std::string& path, const SceneLimits& limits = {});

/// Reads and checks a binary scene file that is open; if it isn't, errno says why. Messages begin
/// with `name`. Throws SceneError.
Scene ReadBinaryScene(const Descriptor& file, const std::string& name,
                      const SceneLimits& limits = {});

/// Writes `scene` as text so that reading it back gives the same scene bit for bit (meshes that
/// were shared come back as separate ones). The scene must be one that a file can hold: finite
/// floats, valid UTF-8 without NUL, indices in range, face flags with nothing but the material ID,
/// texture faces exactly where there are texture vertices, at most kMaxSceneDepth levels. Check the
/// stream's state afterwards.
void WriteSceneFile(const Scene& scene, std::ostream& out);

/// The same in binary; shared meshes stay shared.
void WriteBinaryScene(const Scene& scene, std::ostream& out);

/// What the lists of the scene's meshes count against SceneLimits::mostBytes.
std::uint64_t ListBytes(const Scene& scene);

}  // namespace mapexport
