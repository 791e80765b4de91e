#include "importer/rebuild/FlatFaces.h"

#include <algorithm>
#include <cstddef>

#include <assimp/scene.h>

#include "importer/ReadWithLibrary.h"
#include "importer/ase/ReadAse.h"
#include "importer/threeds/Read3ds.h"
#include "scene/FileText.h"

namespace mapexport {
namespace {

using Flags = std::vector<bool>;

/// The flags of the faces of `mesh` for which `belongs` holds.
Flags FlagsOf(const FileFaces& mesh, const auto& belongs) {
  Flags flags;
  for (const FileFaces::FileFace& face : mesh.faces) {
    if (belongs(face)) flags.push_back(face.isFlat);
  }
  return flags;
}

std::size_t FaceCount(const aiMesh* mesh) {
  return mesh == nullptr ? 0 : mesh->mNumFaces;
}

/// The library makes a mesh for each material of each of the file's meshes. Which one it takes for
/// faces without shows only in the number of its faces.
std::vector<Flags> Match3ds(const aiScene& scene, const std::vector<FileFaces>& meshes) {
  std::vector<Flags> matched;
  auto mesh = meshes.begin();
  std::size_t taken = 0;  // faces of *mesh
  for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
    while (mesh != meshes.end() && taken == mesh->faces.size()) {
      ++mesh;
      taken = 0;
    }
    const std::size_t count = FaceCount(scene.mMeshes[i]);
    if (mesh == meshes.end() || count == 0) return {};
    const std::uint32_t part = scene.mMeshes[i]->mMaterialIndex;
    Flags flags = FlagsOf(*mesh, [&](const auto& face) { return face.part == part; });
    if (flags.size() != count) {
      flags = FlagsOf(*mesh, [&](const auto& face) {
        return face.part == part || face.part == FileFaces::kNoPart;
      });
    }
    if (flags.size() != count) return {};
    taken += count;
    matched.push_back(std::move(flags));
  }
  return matched;
}

/// The library makes a mesh for each sub-material of each of the file's meshes; a number beyond the
/// sub-materials is the last one's.
std::vector<Flags> MatchAse(const aiScene& scene, const AseFaces& file) {
  std::vector<Flags> expected;
  for (const FileFaces& mesh : file.meshes) {
    const std::uint32_t parts =
        mesh.material < file.subMaterials.size() ? file.subMaterials[mesh.material] : 0;
    for (std::uint32_t part = 0; part < std::max(parts, 1u); ++part) {
      Flags flags = FlagsOf(mesh, [&](const FileFaces::FileFace& face) {
        return parts == 0 || std::min(face.part, parts - 1) == part;
      });
      if (!flags.empty()) expected.push_back(std::move(flags));
    }
  }
  if (expected.size() != scene.mNumMeshes) return {};
  for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
    if (expected[i].size() != FaceCount(scene.mMeshes[i])) return {};
  }
  return expected;
}

}  // namespace

std::vector<std::vector<bool>> FlatFaces(const LibraryScene& source) {
  const aiScene& scene = *source.scene;
  std::vector<Flags> flags;
  if (scene.mMeshes != nullptr && source.format == SourceFormat::k3ds) {
    flags = Match3ds(scene, Read3dsFaces(FileText(source.path).View()));
  } else if (scene.mMeshes != nullptr && source.format == SourceFormat::kAse) {
    flags = MatchAse(scene, ReadAseFaces(FileText(source.path).View()));
  }
  flags.resize(scene.mNumMeshes);
  return flags;
}

}  // namespace mapexport
