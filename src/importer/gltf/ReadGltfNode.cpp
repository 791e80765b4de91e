// The nodes, meshes and extras of a glTF document.
#include <algorithm>

#include <fmt/format.h>

#include "importer/gltf/GltfMembers.h"
#include "importer/gltf/GltfTransform.h"

namespace mapexport {
namespace {

/// A node's own transform as the document gives it.
struct LocalTransform {
  std::array<float, 16> matrix{};  ///< by columns
  std::array<float, 3> translation{};
  std::array<float, 4> rotation{0, 0, 0, 1};
  std::array<float, 3> scale{1, 1, 1};
  bool hasMatrix = false;
};

void ReadWeights(JsonValue& value, float& weight) {
  weight = value.ReadFloat();
}

void ReadPrimitive(JsonValue& value, GltfPrimitive& primitive) {
  constexpr int kMostMode = 6;
  value.ReadObject(
      AttributesMember("attributes", primitive.attributes),
      IndexMember("indices", primitive.indices), IndexMember("material", primitive.material),
      JsonMember{"mode",
                 [&](JsonValue& member) {
                   primitive.mode = static_cast<int>(member.ReadInteger(0, kMostMode));
                 }},
      ListMember("targets", primitive.targets, ReadGltfAttributes),
      ExtensionsMember(JsonMember{"KHR_draco_mesh_compression", [&](JsonValue& member) {
                                    GltfDraco& draco = primitive.draco.emplace();
                                    member.ReadObject(
                                        IndexMember("bufferView", draco.bufferView),
                                        AttributesMember("attributes", draco.attributes));
                                  }}));
}

}  // namespace

void ReadGltfAttributes(JsonValue& value, GltfAttributes& into) {
  constexpr std::size_t kMost = 256;  // they are looked for by their names
  JsonObject object(value);
  while (object.ReadAnyMember([&](std::string_view name, JsonValue& index) {
    if (std::ranges::find(into, name, &GltfAttribute::name) != into.end()) {
      index.Fail("is given twice");
    }
    if (into.size() == kMost) index.Fail(fmt::format("is one too many, {} are read", kMost));
    into.push_back({std::string(name), ReadGltfIndex(index)});
  })) {
  }
}

void ReadGltfExtras(JsonValue& value, UserText& extras) {
  if (value.Kind() != "an object") return value.Skip();
  JsonObject object(value);
  while (object.ReadAnyMember([&](std::string_view name, JsonValue& member) {
    const std::string_view kind = member.Kind();
    if (!UserText::Matters(name))
      member.Skip();
    else if (kind == "text" && UserText::IsTextName(name))
      extras.AddText(member.ReadText());
    else if (kind == "text")
      extras.AddProperty(name, PropertyOfText(member.ReadText()));
    else if (kind == "a bool")
      extras.AddProperty(name, PropertyOfBool(member.ReadBool()));
    else if (kind == "a number")
      extras.AddProperty(name, PropertyOfNumber(member.ReadDouble()));
    else if (member.Skip(); kind != "null")
      extras.AddProperty(name, PropertyOfKind(kind));
  })) {
  }
}

void ReadGltfNode(JsonValue& value, GltfNode& node) {
  LocalTransform local;
  value.ReadObject(
      TextMember("name", node.name), IndexMember("mesh", node.mesh), IndexMember("skin", node.skin),
      IndexListMember("children", node.children), ListMember("weights", node.weights, ReadWeights),
      JsonMember{"matrix",
                 [&](JsonValue& member) {
                   local.hasMatrix = true;
                   local.matrix = member.ReadTuple<float, 16>(
                       [](JsonValue& element) { return element.ReadFloat(); });
                 }},
      FloatsMember("translation", local.translation), FloatsMember("rotation", local.rotation),
      FloatsMember("scale", local.scale),
      JsonMember{"extras", [&](JsonValue& member) { ReadGltfExtras(member, node.extras); }},
      ExtensionsMember(JsonMember{"KHR_node_visibility",
                                  [&](JsonValue& member) {
                                    bool isVisible = true;
                                    member.ReadObject(BoolMember("visible", isVisible));
                                    node.isHidden = !isVisible;
                                  }},
                       JsonMember{"EXT_mesh_gpu_instancing", [&](JsonValue& member) {
                                    member.ReadObject(
                                        AttributesMember("attributes", node.instancing));
                                  }}));
  node.local = local.hasMatrix ? AffineFromColumns(local.matrix)
                               : AffineFromParts(local.translation, local.rotation, local.scale);
}

void ReadGltfMesh(JsonValue& value, GltfMesh& mesh) {
  value.ReadObject(
      ListMember("primitives", mesh.primitives, ReadPrimitive),
      ListMember("weights", mesh.weights, ReadWeights),
      JsonMember{"extras", [&](JsonValue& member) { ReadGltfExtras(member, mesh.extras); }});
}

}  // namespace mapexport
