#include "app/textures/FindTextures.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "output/Sha256.h"
#include "system/Ascii.h"
#include "system/FileIdentity.h"
#include "system/PrintableText.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

// Importers drop the leading ".." of a picture's path.
constexpr int kMostParents = 3;

std::string KeyOf(std::string_view path) {
  return LowerCase(TextureNamePart(path));
}

void RequireFolder(const std::string& path) {
  std::error_code error;
  const std::filesystem::directory_iterator opened(path, error);
  if (!error) return;
  throw RunError(fmt::format(
      "{}: {}", path, error.value() == ENOTDIR ? "is not a folder" : ErrnoText(error.value())));
}

class Search {
 public:
  Search(const SceneTextures& scene, const ExportArguments& arguments)
      : scene_(scene),
        folders_(arguments.textures),
        sceneFolder_(FolderPart(arguments.scene.path)) {
    if (!folders_.empty()) return;
    std::set<std::string_view> known;
    for (const std::string& picture : scene.pictures) {
      if (known.insert(picture).second) pictures_[KeyOf(picture)].push_back(picture);
    }
  }

  TextureUse Find(ModelTexture texture, Remarks& remarks) {
    TextureUse use{std::move(texture), true, std::nullopt};
    const std::string& name = use.texture.name;
    if (folders_.empty()) {
      use.file = FindNamed(name, remarks);
    } else {
      use.file = FindInFolders(files_, folders_, name);
    }
    if (use.file) return use;
    remarks.push_back(MissingTexture(
        use.texture, folders_.empty() ? "where the scene names it or beside the scene"
                                      : fmt::format("in {}", fmt::join(folders_, ", "))));
    std::vector<std::string>& nodes = remarks.back().nodes;
    for (const std::string& material : use.texture.materials) {
      const auto found = scene_.nodesOf.find(material);
      if (found == scene_.nodesOf.end()) continue;
      nodes.insert(nodes.end(), found->second.begin(), found->second.end());
    }
    std::ranges::sort(nodes);
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    return use;
  }

 private:
  /// Where the scene names it, else beside the scene.
  std::optional<TextureFile> FindNamed(const std::string& name, Remarks& remarks) {
    std::optional<TextureFile> first;
    for (std::string path : pictures_[KeyOf(name)]) {
      std::ranges::replace(path, '\\', '/');
      const std::optional<TextureFile> file = FindPicture(path);
      if (!file) continue;
      if (!first) {
        first = file;
      } else if (Sha256OfFile(first->path) != Sha256OfFile(file->path)) {
        remarks.push_back(MakeWarning("texture-clash",
                                      fmt::format("texture {} stands for two pictures: {} and {}",
                                                  Quoted(name), first->path, file->path)));
      }
    }
    return first ? first : files_.Find(sceneFolder_, name);
  }

  std::optional<TextureFile> FindPicture(const std::string& path) {
    if (path.starts_with('/')) return files_.Find(FolderPart(path), path);
    std::string folder = sceneFolder_;
    for (int i = 0; i <= kMostParents; ++i, folder += "../") {
      if (auto file = files_.Find(folder + FolderPart(path), path)) return file;
    }
    return std::nullopt;
  }

  const SceneTextures& scene_;
  const std::vector<std::string>& folders_;
  const std::string sceneFolder_;
  std::map<std::string, std::vector<std::string>> pictures_;  ///< by their names
  TextureFolders files_;
};

/// Whether textures are looked for.
bool AreWanted(const ExportArguments& arguments) {
  return !arguments.textures.empty() || arguments.copyTextures;
}

/// Indices of the materials of the node's faces, each once.
std::set<int> MaterialsOf(const Scene& scene, const SceneNode& node) {
  std::set<int> indices;
  if (node.material < 0 || node.mesh == nullptr) return indices;
  const SceneMaterial& material = scene.materials[static_cast<std::size_t>(node.material)];
  if (material.materialClass != SceneMaterialClass::kMulti) return {node.material};
  std::vector<bool> isUsed(material.subMaterials.size());
  for (const Face& face : node.mesh->faces) {
    if (face.MatID() < isUsed.size()) isUsed[face.MatID()] = true;
  }
  for (std::size_t id = 0; id < isUsed.size(); ++id) {
    if (isUsed[id] && material.subMaterials[id] >= 0) indices.insert(material.subMaterials[id]);
  }
  return indices;
}

void AddNodes(const Scene& scene, const SceneNode& node, SceneTextures& textures) {
  for (const int material : MaterialsOf(scene, node)) {
    textures.nodesOf[scene.materials[static_cast<std::size_t>(material)].name].push_back(node.name);
  }
  for (const SceneNode& child : node.children) AddNodes(scene, child, textures);
}

}  // namespace

SceneTextures TexturesOf(const Scene& scene, const ExportArguments& arguments) {
  SceneTextures textures;
  if (!AreWanted(arguments)) return textures;
  for (const SceneMaterial& material : scene.materials) {
    if (material.diffuseMap) textures.pictures.push_back(material.diffuseMap->file);
  }
  AddNodes(scene, scene.root, textures);
  return textures;
}

void RequireTextureFolders(std::span<const std::string> folders) {
  for (const std::string& folder : folders) RequireFolder(folder);
}

std::optional<TextureFile> FindInFolders(TextureFolders& files,
                                         std::span<const std::string> folders,
                                         std::string_view texture) {
  for (const std::string& folder : folders) {
    if (auto file = files.Find(folder, texture)) return file;
  }
  return std::nullopt;
}

Remark MissingTexture(const ModelTexture& texture, std::string_view where) {
  const std::vector<std::string>& materials = texture.materials;
  return MakeWarning(
      "missing-texture",
      fmt::format("texture {} of material {}{} is not found {}", Quoted(texture.name),
                  Quoted(materials.front()),
                  materials.size() == 1 ? "" : fmt::format(" and {} more", materials.size() - 1),
                  where));
}

std::vector<TextureUse> FindTextures(std::vector<ModelTexture> textures, const SceneTextures& scene,
                                     const ExportArguments& arguments, Messages& messages) {
  std::vector<TextureUse> uses;
  if (!AreWanted(arguments)) {
    for (ModelTexture& texture : textures) uses.push_back({std::move(texture), false, {}});
    return uses;
  }
  Remarks remarks;
  Search search(scene, arguments);
  for (ModelTexture& texture : textures) uses.push_back(search.Find(std::move(texture), remarks));
  messages.TellAll(arguments.scene.path, std::move(remarks));
  return uses;
}

}  // namespace mapexport
