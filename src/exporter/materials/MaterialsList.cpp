#include "exporter/materials/MaterialsList.h"

#include <cassert>
#include <string_view>
#include <utility>

#include "exporter/base/ProcessState.h"

namespace mapexport {
namespace {

/// Slot of a standard material's diffuse map.
constexpr int kDiffuseMap = 1;

ColourRgba OpaqueColour(const Color& c) {
  return {c.r, c.g, c.b};
}

/// The file name of a bitmap's path: all that follows the last separator before the path's first
/// ".". Without any "." it is what follows the last separator.
CStr TextureFileName(std::string_view path) {
  const std::size_t separator = path.find_last_of("\\/", path.find('.'));
  return CStr(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

/// Fills the record's texture name, as the bitmap's path spells it, and its UV transform.
void TakeTexture(const StdMat& material, MaterialRecord& record) {
  record.textureName = "NULL";
  const Texmap* map = material.GetSubTexmap(kDiffuseMap);
  if (map == nullptr) return;
  Matrix3 uvTransform;
  if (map->GetUVTransform(uvTransform)) record.uvTransform = uvTransform;
  if (map->ClassID() != kBitmapTexClassID) return;
  record.textureName = TextureFileName(static_cast<const BitmapTex*>(map)->GetMapName());
}

MaterialRecord MakeRecord(const StdMat& material, TimeValue time,
                          const TextureNames& transparentTextures) {
  MaterialRecord record;
  record.name = material.GetName();
  TakeTexture(material, record);
  if (record.Textured()) {
    // The texture carries the colours.
    record.ambient = {0.1f, 0.1f, 0.1f};
    record.diffuse = {1.0f, 1.0f, 1.0f};
    record.textureName.toLower();
    const std::string_view texture = record.textureName.View();
    record.transparent = transparentTextures.Contains(texture.substr(0, texture.find('.')));
  } else {
    record.ambient = OpaqueColour(material.GetAmbient(time));
    record.diffuse = OpaqueColour(material.GetDiffuse(time));
  }
  record.specular = OpaqueColour(material.GetSpecular(time));
  record.scalar1 = material.GetOpacity(time);
  record.scalar2 = material.GetShininess(time);
  record.scalar3 = material.GetShinStr(time);
  record.modeValue = material.GetShading();
  record.twoSided = material.GetTwoSided();
  return record;
}

}  // namespace

int MaterialsList::FindOrAddMaterial(StdMat& material, bool& textured) {
  return FindOrAddMaterial(material, textured, State().currentTime, State().transparentTextures);
}

bool MaterialsList::FindOrAddSubMaterials(Mtl& multi, int count, std::span<int> indexMap) {
  return FindOrAddSubMaterials(multi, count, indexMap, State().currentTime,
                               State().transparentTextures);
}

int MaterialsList::FindOrAddMaterial(StdMat& material, bool& textured, TimeValue time,
                                     const TextureNames& transparentTextures) {
  IndexNewRecords();
  const auto found = indexByName_.find(material.GetName());
  int index = 0;
  if (found != indexByName_.end()) {
    index = found->second;
  } else {
    index = static_cast<int>(Count());
    records_.Append(MakeRecord(material, time, transparentTextures));
  }
  textured = Records()[static_cast<std::size_t>(index)].Textured();
  return index;
}

bool MaterialsList::FindOrAddSubMaterials(Mtl& multi, int count, std::span<int> indexMap,
                                          TimeValue time, const TextureNames& transparentTextures) {
  assert(count <= multi.NumSubMtls() && std::cmp_less_equal(count, indexMap.size()));
  bool anyTextured = false;
  for (int i = 0; i < count; ++i) {
    Mtl* const sub = multi.GetSubMtl(i);
    if (sub == nullptr || sub->ClassID() != kStandardMtlClassID) continue;
    bool textured = false;
    indexMap[static_cast<std::size_t>(i)] =
        FindOrAddMaterial(static_cast<StdMat&>(*sub), textured, time, transparentTextures);
    anyTextured = anyTextured || textured;
  }
  return anyTextured;
}

bool MaterialsList::IsTransparent(int index) const {
  return index >= 0 && std::cmp_less(index, Count()) &&
         records_[static_cast<std::size_t>(index)].transparent;
}

bool MaterialsList::IsTwoSided(int index) const {
  return index >= 0 && std::cmp_less(index, Count()) &&
         records_[static_cast<std::size_t>(index)].twoSided;
}

/// Brings the name search up to date with the records that were appended since the last one.
void MaterialsList::IndexNewRecords() {
  for (; indexedCount_ < Count(); ++indexedCount_) {
    indexByName_.try_emplace(records_[indexedCount_].name.data(), static_cast<int>(indexedCount_));
  }
}

}  // namespace mapexport
