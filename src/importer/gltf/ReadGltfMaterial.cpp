// The materials of a glTF document.
#include "importer/gltf/GltfMembers.h"

namespace mapexport {
namespace {

auto TextureMember(const char* name, GltfTextureUse& into) {
  return JsonMember{name, [&into](JsonValue& value) {
                      int otherSet = kNoGltfIndex;
                      value.ReadObject(
                          IndexMember("index", into.texture), IndexMember("texCoord", into.set),
                          ExtensionsMember(JsonMember{
                              "KHR_texture_transform", [&](JsonValue& extension) {
                                GltfTextureTransform& transform = into.transform.emplace();
                                extension.ReadObject(FloatsMember("offset", transform.offset),
                                                     FloatMember("rotation", transform.rotation),
                                                     FloatsMember("scale", transform.scale),
                                                     IndexMember("texCoord", otherSet));
                              }}));
                      if (otherSet != kNoGltfIndex) into.set = otherSet;
                    }};
}

/// What isn't known is opaque, as what isn't said.
GltfMaterial::Alpha AlphaOf(std::string_view mode) {
  if (mode == "MASK") return GltfMaterial::Alpha::kMask;
  return mode == "BLEND" ? GltfMaterial::Alpha::kBlend : GltfMaterial::Alpha::kOpaque;
}

}  // namespace

void ReadGltfMaterial(JsonValue& value, GltfMaterial& material) {
  value.ReadObject(
      TextMember("name", material.name),
      JsonMember{"pbrMetallicRoughness",
                 [&](JsonValue& member) {
                   member.ReadObject(FloatsMember("baseColorFactor", material.baseColor),
                                     TextureMember("baseColorTexture", material.baseColorTexture),
                                     FloatMember("roughnessFactor", material.roughness));
                 }},
      FloatsMember("emissiveFactor", material.emissive),
      TextureMember("emissiveTexture", material.emissiveTexture),
      JsonMember{"alphaMode",
                 [&](JsonValue& member) { material.alpha = AlphaOf(member.ReadText()); }},
      FloatMember("alphaCutoff", material.alphaCutoff),
      BoolMember("doubleSided", material.doubleSided),
      ExtensionsMember(
          JsonMember{"KHR_materials_unlit",
                     [&](JsonValue& member) {
                       member.Skip();
                       material.isUnlit = true;
                     }},
          JsonMember{"KHR_materials_pbrSpecularGlossiness", [&](JsonValue& member) {
                       GltfSpecularGlossiness& look = material.specularGlossiness.emplace();
                       member.ReadObject(FloatsMember("diffuseFactor", look.diffuse),
                                         FloatsMember("specularFactor", look.specular),
                                         FloatMember("glossinessFactor", look.glossiness),
                                         TextureMember("diffuseTexture", look.diffuseTexture));
                     }}));
}

}  // namespace mapexport
