// The smoothing groups and sub-materials of the faces of an ASE file.
#include <charconv>
#include <cstddef>
#include <system_error>

#include "importer/rebuild/FlatFaces.h"
#include "importer/text/StatementLines.h"

namespace mapexport {
namespace {

std::optional<std::uint32_t> Whole(std::string_view word) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc{} || end == word.data()) return std::nullopt;
  return number;
}

/// "*MESH_FACE 0: A: 0 B: 1 C: 2 AB: 1 BC: 1 CA: 0 *MESH_SMOOTHING 1,3 *MESH_MTLID 2"; without a
/// group, nothing follows *MESH_SMOOTHING.
FileFaces::FileFace FaceOf(std::string_view rest) {
  FileFaces::FileFace face;
  while (!rest.empty()) {
    const std::string_view key = TakeWord(rest);
    if (key == "*MESH_SMOOTHING") {
      face.isFlat = Whole(rest).value_or(0) == 0;  // groups count from 1
    } else if (key == "*MESH_MTLID") {
      face.part = Whole(rest).value_or(0);
    }
  }
  return face;
}

}  // namespace

AseFaces ReadAseFaces(std::string_view text) {
  AseFaces file;
  bool isInObject = false;
  bool isInAnimation = false;
  StatementLines lines(text);
  while (lines.Next()) {
    std::string_view rest = lines.Statement();
    if (rest.front() != '*') continue;
    const std::string_view key = TakeWord(rest);
    if (key == "*MATERIAL") {
      file.subMaterials.push_back(0);
    } else if (key == "*SUBMATERIAL" && !file.subMaterials.empty()) {
      ++file.subMaterials.back();
    } else if (key == "*GEOMOBJECT") {
      file.meshes.emplace_back();
      isInObject = true;
      isInAnimation = false;
    } else if (key == "*MESH_ANIMATION") {
      isInAnimation = true;  // its meshes are none of the object's
    } else if (key == "*MATERIAL_REF" && isInObject) {
      file.meshes.back().material = Whole(rest).value_or(FileFaces::kNoPart);
    } else if (key == "*MESH_FACE" && isInObject && !isInAnimation) {
      file.meshes.back().faces.push_back(FaceOf(rest));
    }
  }
  return file;
}

}  // namespace mapexport
