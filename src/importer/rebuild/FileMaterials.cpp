// What a file itself says of its materials, where the import library loses or changes it.
#include "importer/rebuild/FileMaterials.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <assimp/scene.h>

#include "importer/ReadWithLibrary.h"
#include "importer/ase/ReadAse.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/threeds/Read3ds.h"
#include "scene/FileText.h"

namespace mapexport {
namespace {

// The library's reading of decimal numbers is off by some units in the last place.
constexpr float kColourTolerance = 1e-4f;

std::vector<FileMaterial> ReadMaterials(const LibraryScene& source) {
  switch (source.format) {
    case SourceFormat::k3ds:
      return Read3dsMaterials(FileText(source.path).View());
    case SourceFormat::kAse:
      return ReadAseMaterials(FileText(source.path).View());
    default:
      return {};
  }
}

bool IsSame(const FileMaterial& file, const aiMaterial& material) {
  aiString name;
  material.Get(AI_MATKEY_NAME, name);
  if (file.name != BytesOf(name)) return false;
  if (!file.diffuse) return true;
  aiColor3D diffuse;
  material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse);
  const auto near = [](float a, float b) { return std::abs(a - b) < kColourTolerance; };
  return near(file.diffuse->r, diffuse.r) && near(file.diffuse->g, diffuse.g) &&
         near(file.diffuse->b, diffuse.b);
}

}  // namespace

std::vector<std::optional<FileMaterial>> ReadFileMaterials(const LibraryScene& source) {
  const aiScene& scene = *source.scene;
  const std::size_t count = scene.mMaterials == nullptr ? 0 : scene.mNumMaterials;
  std::vector<std::optional<FileMaterial>> materials(count);
  std::vector<FileMaterial> file = ReadMaterials(source);
  auto next = file.begin();
  for (std::size_t i = 0; i < count; ++i) {
    const aiMaterial* const material = scene.mMaterials[i];
    if (material == nullptr) continue;
    const auto found = std::find_if(next, file.end(), [&](const FileMaterial& candidate) {
      return IsSame(candidate, *material);
    });
    if (found == file.end()) continue;
    materials[i] = std::move(*found);
    next = found + 1;
  }
  return materials;
}

}  // namespace mapexport
