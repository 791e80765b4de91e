// glTF materials as the host's Standard materials.
#include "importer/gltf/GltfMaterials.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "importer/text/HostText.h"
#include "importer/text/TexturePath.h"
#include "system/IsFinite.h"

namespace mapexport {
namespace {

// In the numbers of the import library, which other formats arrive with.
constexpr std::int32_t kPhysicallyBased = 11;
constexpr std::int32_t kUnlit = 9;

constexpr float kMostShininess = 1000;

bool IsBlack(const std::array<float, 3>& color) {
  return std::ranges::all_of(color, [](float part) { return part == 0; });
}

bool OnlyEmits(const GltfMaterial& material) {
  const std::array<float, 4>& base = material.baseColor;
  return !material.specularGlossiness && IsBlack({base[0], base[1], base[2]}) &&
         !IsBlack(material.emissive);
}

/// The name of the file that the image is or would be.
std::string FileOf(const GltfDocument& document, std::size_t image) {
  const GltfImage& source = document.images[image];
  if (!source.isInFile) return ValidUtf8(DecodePercents(source.uri));
  if (!source.name.empty()) return source.name;
  return fmt::format("embedded{}.{}", source.number, source.ending);
}

/// What turns mesh coordinates, v up, into the map's. The extension has v down, about the upper
/// left corner: scale, rotate, offset.
Matrix3 UvTransform(const GltfTextureTransform& transform) {
  const double c = std::cos(static_cast<double>(transform.rotation));
  const double s = std::sin(static_cast<double>(transform.rotation));
  const auto scaleU = static_cast<double>(transform.scale[0]);
  const auto scaleV = static_cast<double>(transform.scale[1]);
  // The added zero makes +0 of the -0 that a sign change leaves.
  const auto row = [](double u, double v) {
    return Point3{static_cast<float>(u + 0.0), static_cast<float>(v + 0.0), 0.0f};
  };
  Matrix3 host;
  host.rows[0] = row(scaleU * c, scaleU * s);
  host.rows[1] = row(-scaleV * s, scaleV * c);
  host.rows[3] = row(static_cast<double>(transform.offset[0]) + scaleV * s,
                     1 - static_cast<double>(transform.offset[1]) - scaleV * c);
  return host;
}

std::optional<SceneTexture> DiffuseMap(const GltfDocument& document, const GltfMaterial& material) {
  const GltfTextureUse* const use = ShownTexture(material);
  if (use == nullptr) return std::nullopt;
  const int image = document.textures[static_cast<std::size_t>(use->texture)];
  if (image == kNoGltfIndex) return std::nullopt;
  SceneTexture texture;
  texture.file = NormalisedTexturePath(FileOf(document, static_cast<std::size_t>(image)));
  if (texture.file.empty()) return std::nullopt;
  if (use->transform) {
    const Matrix3 transform = UvTransform(*use->transform);
    if (std::ranges::all_of(transform.rows, IsFinite<Point3>) && transform != Matrix3{})
      texture.uvTransform = transform;
  }
  return texture;
}

SceneMaterial MakeMaterial(const GltfDocument& document, std::size_t index) {
  const GltfMaterial& source = document.materials[index];
  SceneMaterial host;
  host.name = source.name.empty() ? fmt::format("Material {}", index + 1) : source.name;
  float alpha = source.baseColor[3];
  if (source.specularGlossiness) {
    const GltfSpecularGlossiness& look = *source.specularGlossiness;
    host.diffuse = {look.diffuse[0], look.diffuse[1], look.diffuse[2]};
    host.specular = {look.specular[0], look.specular[1], look.specular[2]};
    host.shininess = look.glossiness * kMostShininess;
    alpha = look.diffuse[3];
  } else {
    host.diffuse = {source.baseColor[0], source.baseColor[1], source.baseColor[2]};
    const float smoothness = 1 - source.roughness;
    host.shininess = smoothness * (smoothness * kMostShininess);
  }
  if (OnlyEmits(source)) {
    host.diffuse = {source.emissive[0], source.emissive[1], source.emissive[2]};
  }
  if (!std::isfinite(host.shininess)) host.shininess = 0;
  if (source.alpha == GltfMaterial::Alpha::kBlend) host.opacity = std::clamp(alpha, 0.0f, 1.0f);
  if (source.alpha == GltfMaterial::Alpha::kMask && alpha < source.alphaCutoff) host.opacity = 0;
  host.shading = source.isUnlit ? kUnlit : kPhysicallyBased;
  host.twoSided = source.doubleSided;
  host.diffuseMap = DiffuseMap(document, source);
  return host;
}

}  // namespace

const GltfTextureUse* ShownTexture(const GltfMaterial& material) {
  const auto there = [](const GltfTextureUse& use) {
    return use.texture == kNoGltfIndex ? nullptr : &use;
  };
  if (material.specularGlossiness) return there(material.specularGlossiness->diffuseTexture);
  return there(OnlyEmits(material) ? material.emissiveTexture : material.baseColorTexture);
}

std::vector<SceneMaterial> MakeGltfMaterials(const GltfDocument& document, GltfBudget& budget) {
  std::vector<SceneMaterial> materials;
  materials.reserve(document.materials.size());
  for (std::size_t i = 0; i < document.materials.size(); ++i) {
    const SceneMaterial& made = materials.emplace_back(MakeMaterial(document, i));
    const std::size_t file = made.diffuseMap ? made.diffuseMap->file.size() : 0;
    budget.TakeText(made.name.size() + file, fmt::format("materials[{}]", i));
  }
  return materials;
}

}  // namespace mapexport
