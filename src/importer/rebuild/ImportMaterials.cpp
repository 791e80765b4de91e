// Foreign materials as the host's Standard materials.
#include "importer/rebuild/ImportMaterials.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/ReadWithLibrary.h"
#include "importer/rebuild/FileMaterials.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/rebuild/TextureTransform.h"
#include "importer/text/TexturePath.h"
#include "system/IsFinite.h"

namespace mapexport {
namespace {

/// A key of the library; its AI_MATKEY_ macros are such triples.
struct Key {
  const char* name;
  unsigned kind;
  unsigned index;
};

/// The first number of a property. The library's form for one number writes as many as are stored.
template <class Number>
bool GetNumber(const aiMaterial& material, const Key& key, Number& value) {
  unsigned count = 1;
  return material.Get(key.name, key.kind, key.index, &value, &count) == aiReturn_SUCCESS;
}

float FloatOf(const aiMaterial& material, float fallback, const Key& key) {
  float value = fallback;
  return GetNumber(material, key, value) && std::isfinite(value) ? value : fallback;
}

int IntegerOf(const aiMaterial& material, const Key& key) {
  // The library takes a double for a text, and then ends the process since no NUL ends it.
  const aiMaterialProperty* stored = nullptr;
  if (aiGetMaterialProperty(&material, key.name, key.kind, key.index, &stored) !=
          aiReturn_SUCCESS ||
      stored->mType == aiPTI_Double)
    return 0;
  int value = 0;
  return GetNumber(material, key, value) ? value : 0;
}

Color ColourOf(const aiMaterial& material, const Key& key) {
  aiColor3D colour;
  if (material.Get(key.name, key.kind, key.index, colour) != aiReturn_SUCCESS) return {};
  const auto finite = [](float x) { return std::isfinite(x) ? x : 0.0f; };
  return {finite(colour.r), finite(colour.g), finite(colour.b)};
}

/// The map in the first of the two slots in which readers store what the host calls the diffuse
/// map.
std::optional<SceneTexture> DiffuseMap(const LibraryScene& source, const aiMaterial& material) {
  for (const aiTextureType slot : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR}) {
    aiString path;
    if (material.Get(AI_MATKEY_TEXTURE(slot, 0), path) != aiReturn_SUCCESS) continue;
    SceneTexture texture;
    texture.file = TexturePath(source, path);
    if (texture.file.empty()) continue;
    aiUVTransform stored;
    if (material.Get(AI_MATKEY_UVTRANSFORM(slot, 0), stored) == aiReturn_SUCCESS) {
      const Matrix3 transform = TextureTransform(stored, source);
      if (std::ranges::all_of(transform.rows, IsFinite<Point3>) && transform != Matrix3{})
        texture.uvTransform = transform;
    }
    return texture;
  }
  return std::nullopt;
}

SceneMaterial ImportMaterial(const LibraryScene& source, const aiMaterial& material,
                             std::string name) {
  SceneMaterial host;
  host.name = std::move(name);
  host.ambient = ColourOf(material, {AI_MATKEY_COLOR_AMBIENT});
  host.diffuse = ColourOf(material, {AI_MATKEY_COLOR_DIFFUSE});
  host.specular = ColourOf(material, {AI_MATKEY_COLOR_SPECULAR});
  host.opacity = std::clamp(FloatOf(material, 1.0f, {AI_MATKEY_OPACITY}), 0.0f, 1.0f);
  host.shininess = FloatOf(material, 0.0f, {AI_MATKEY_SHININESS});
  host.shininessStrength = FloatOf(material, 0.0f, {AI_MATKEY_SHININESS_STRENGTH});
  host.shading = IntegerOf(material, {AI_MATKEY_SHADING_MODEL});
  // The reader of PLY files calls everything two-sided, of which the format knows nothing.
  host.twoSided =
      source.format != SourceFormat::kPly && IntegerOf(material, {AI_MATKEY_TWOSIDED}) != 0;
  host.diffuseMap = DiffuseMap(source, material);
  return host;
}

/// By which the library multiplies the shininess of .ase files.
constexpr float kAseShininess = 15.0f;

/// Sets what `file` says in place of what the library made of it: .3ds and .ase lose their
/// shininess when its strength is 0 and the other way round, get the scene's ambient colour added
/// to their own; .ase shininess is multiplied, a two-sided .3ds material shows one side.
void ApplyFile(const FileMaterial& file, SceneMaterial& host) {
  const auto set = [](float& value, const std::optional<float>& stated) {
    if (stated && std::isfinite(*stated)) value = *stated;
  };
  if (file.ambient) {
    set(host.ambient.r, file.ambient->r);
    set(host.ambient.g, file.ambient->g);
    set(host.ambient.b, file.ambient->b);
  }
  set(host.opacity, file.opacity);
  host.opacity = std::clamp(host.opacity, 0.0f, 1.0f);
  set(host.shininess, file.shininess);
  set(host.shininessStrength, file.shininessStrength);
  if (file.shading) host.shading = *file.shading;
  host.twoSided = host.twoSided || file.twoSided;
}

/// Whether the reader made this material up for meshes that have none. Most readers call it
/// "DefaultMaterial"; the one of glTF 1 adds a nameless one behind the file's own, those of OFF and
/// PLY give a nameless one, even two-sided, to every mesh.
bool IsStandIn(const LibraryScene& source, const aiMaterial& material, const std::string& name,
               std::size_t index) {
  // The second one is what the library's reader of .3ds files calls it.
  const bool isGltf = source.format == SourceFormat::kGltf1;
  if (!name.empty()) return !isGltf && (name == AI_DEFAULT_MATERIAL_NAME || name == "%%%DEFAULT");
  switch (source.format) {
    case SourceFormat::kGltf1:
      return index + 1 == source.scene->mNumMaterials;
    case SourceFormat::kOff:
    case SourceFormat::kPly:
      return material.GetTextureCount(aiTextureType_DIFFUSE) == 0;
    default:
      return false;
  }
}

/// The reader of AC3D files makes one of the file's materials into one for each texture of its
/// faces, all of the same name, which exporters take for one material: gives them names apart.
void NameByTexture(std::vector<SceneMaterial>& materials) {
  const auto fileOf = [](const SceneMaterial& material) {
    return material.diffuseMap ? std::string_view(material.diffuseMap->file) : std::string_view();
  };
  std::unordered_map<std::string, std::string> firstFile;
  std::unordered_set<std::string> ambiguous;
  for (const SceneMaterial& material : materials) {
    const auto [entry, isNew] = firstFile.try_emplace(material.name, fileOf(material));
    if (!isNew && entry->second != fileOf(material)) ambiguous.insert(material.name);
  }
  for (SceneMaterial& material : materials) {
    std::string_view file = fileOf(material);
    if (file.empty() || !ambiguous.contains(material.name)) continue;
    file.remove_prefix(file.find_last_of("/\\") + 1);  // npos + 1 is 0
    material.name += fmt::format(" ({})", file);
  }
}

}  // namespace

ImportedMaterials ImportMaterials(const LibraryScene& source) {
  const aiScene& scene = *source.scene;
  const std::size_t count = scene.mMaterials == nullptr ? 0 : scene.mNumMaterials;
  const std::vector<std::optional<FileMaterial>> fileMaterials = ReadFileMaterials(source);
  ImportedMaterials imported;
  imported.hostIndex.assign(count, -1);
  for (std::size_t i = 0; i < count; ++i) {
    const aiMaterial* material = scene.mMaterials[i];
    if (material == nullptr) continue;
    aiString stored;
    material->Get(AI_MATKEY_NAME, stored);
    std::string name = source.Text(stored);
    if (IsStandIn(source, *material, name, i)) continue;
    if (name.empty()) name = fmt::format("Material {}", i + 1);
    imported.hostIndex[i] = static_cast<int>(imported.materials.size());
    imported.materials.push_back(ImportMaterial(source, *material, std::move(name)));
    SceneMaterial& host = imported.materials.back();
    if (fileMaterials[i])
      ApplyFile(*fileMaterials[i], host);
    else if (source.format == SourceFormat::kAse)
      host.shininess /= kAseShininess;
  }
  if (source.format == SourceFormat::kAc3d) NameByTexture(imported.materials);
  return imported;
}

}  // namespace mapexport
