// Writes scene files: members in the order of their description, none that has its default value.
#include <array>
#include <bit>

#include "scene/SceneFile.h"
#include "scene/WriteSceneTree.h"
#include "system/JsonStream.h"

namespace mapexport {

namespace {

constexpr bool kOnLines = JsonStream::kOnLines;
constexpr bool kOnOneLine = JsonStream::kOnOneLine;
constexpr std::size_t kIndent = 2;

// Bitwise equality: the file keeps -0 apart from 0.
template <class T>
bool SameBits(const T& a, const T& b) {
  using Words = std::array<std::uint32_t, sizeof(T) / sizeof(std::uint32_t)>;
  return std::bit_cast<Words>(a) == std::bit_cast<Words>(b);
}

void WritePoint(JsonStream& json, const Point3& p) {
  json.Open('[', kOnOneLine);
  json.Number(p.x);
  json.Number(p.y);
  json.Number(p.z);
  json.Close(']');
}

void WriteTransform(JsonStream& json, const Matrix3& transform) {
  json.Open('[', kOnOneLine);
  for (const Point3& row : transform.rows) WritePoint(json, row);
  json.Close(']');
}

void WriteText(JsonStream& json, std::string_view name, std::string_view text) {
  if (text.empty()) return;
  json.Key(name);
  json.Text(text);
}

void WriteColour(JsonStream& json, std::string_view name, const Color& colour) {
  if (SameBits(colour, Color{})) return;
  json.Key(name);
  WritePoint(json, {colour.r, colour.g, colour.b});
}

void WriteFloat(JsonStream& json, std::string_view name, float number, float whenAbsent) {
  if (SameBits(number, whenAbsent)) return;
  json.Key(name);
  json.Number(number);
}

void WriteTexture(JsonStream& json, const SceneTexture& texture) {
  json.Open('{', kOnLines);
  if (!texture.isBitmap) WriteText(json, "class", "other");
  WriteText(json, "file", texture.file);
  if (texture.uvTransform) {
    json.Key("uvTransform");
    WriteTransform(json, *texture.uvTransform);
  }
  json.Close('}');
}

void WriteSubMaterials(JsonStream& json, const std::vector<int>& subMaterials) {
  json.Open('[', kOnOneLine);
  for (const int index : subMaterials) {
    if (index < 0) {
      json.Null();
    } else {
      json.Number(index);
    }
  }
  json.Close(']');
}

void WriteMaterial(JsonStream& json, const SceneMaterial& material) {
  static const SceneMaterial whenAbsent;
  json.Open('{', kOnLines);
  WriteText(json, "name", material.name);
  if (material.materialClass == SceneMaterialClass::kMulti) WriteText(json, "class", "multi");
  if (material.materialClass == SceneMaterialClass::kOther) WriteText(json, "class", "other");
  WriteColour(json, "ambient", material.ambient);
  WriteColour(json, "diffuse", material.diffuse);
  WriteColour(json, "specular", material.specular);
  WriteFloat(json, "opacity", material.opacity, whenAbsent.opacity);
  WriteFloat(json, "shininess", material.shininess, whenAbsent.shininess);
  WriteFloat(json, "shininessStrength", material.shininessStrength, whenAbsent.shininessStrength);
  if (material.shading != whenAbsent.shading) {
    json.Key("shading");
    json.Number(material.shading);
  }
  if (material.twoSided) {
    json.Key("twoSided");
    json.Bool(true);
  }
  if (material.diffuseMap) {
    json.Key("diffuseMap");
    WriteTexture(json, *material.diffuseMap);
  }
  if (!material.subMaterials.empty()) {
    json.Key("subMaterials");
    WriteSubMaterials(json, material.subMaterials);
  }
  json.Close('}');
}

void WriteFace(JsonStream& json, const Face& face) {
  json.Open('[', kOnOneLine);
  for (const std::uint32_t index : face.v) json.Number(index);
  if (face.smGroup != 0 || face.MatID() != 0) json.Number(face.smGroup);
  if (face.MatID() != 0) json.Number(face.MatID());
  json.Close(']');
}

void WriteTextureFace(JsonStream& json, const TVFace& face) {
  json.Open('[', kOnOneLine);
  for (const std::uint32_t index : face.t) json.Number(index);
  json.Close(']');
}

template <class Element, class Write>
void WriteList(JsonStream& json, std::string_view name, const std::vector<Element>& list,
               const Write& write) {
  json.Key(name);
  json.Open('[', kOnLines);
  for (const Element& element : list) write(json, element);
  json.Close(']');
}

void WriteMesh(JsonStream& json, const Mesh& mesh) {
  json.Open('{', kOnLines);
  if (!mesh.verts.empty()) WriteList(json, "vertices", mesh.verts, WritePoint);
  if (!mesh.faces.empty()) WriteList(json, "faces", mesh.faces, WriteFace);
  if (!mesh.tVerts.empty()) {
    WriteList(json, "textureVertices", mesh.tVerts, WritePoint);
    WriteList(json, "textureFaces", mesh.tvFace, WriteTextureFace);
  }
  json.Close('}');
}

void WriteNode(JsonStream& json, const SceneNode& node, const MeshWriter& writeMesh) {
  static const SceneNode whenAbsent;
  json.Open('{', kOnLines);
  WriteText(json, "name", node.name);
  if (!SameBits(node.objectTransform, whenAbsent.objectTransform)) {
    json.Key("objectTransform");
    WriteTransform(json, node.objectTransform);
  }
  if (node.wireColor != whenAbsent.wireColor) {
    json.Key("wireColor");
    json.Open('[', kOnOneLine);
    for (const std::uint8_t component : node.wireColor) json.Number(component);
    json.Close(']');
  }
  WriteText(json, "userProperties", node.userProperties);
  if (node.material >= 0) {
    json.Key("material");
    json.Number(node.material);
  }
  if (node.object == SceneObject::kHelper) WriteText(json, "object", "helper");
  if (node.object == SceneObject::kMesh && node.mesh == nullptr) {
    WriteText(json, "object", "mesh");
  }
  if (node.object == SceneObject::kMesh && node.mesh != nullptr) {
    json.Key("mesh");
    writeMesh(json, *node.mesh);
  }
  if (!node.children.empty()) {
    WriteList(json, "children", node.children,
              [&](JsonStream&, const SceneNode& child) { WriteNode(json, child, writeMesh); });
  }
  json.Close('}');
}

}  // namespace

void WriteSceneTree(const Scene& scene, const MeshWriter& writeMesh, std::ostream& out) {
  JsonStream json(out, kIndent);
  json.Open('{', kOnLines);
  WriteText(json, "format", "mapexport-scene");
  json.Key("version");
  json.Number(1);
  if (!scene.materials.empty()) WriteList(json, "materials", scene.materials, WriteMaterial);
  json.Key("root");
  WriteNode(json, scene.root, writeMesh);
  json.Close('}');
}

void WriteSceneFile(const Scene& scene, std::ostream& out) {
  WriteSceneTree(scene, WriteMesh, out);
}

}  // namespace mapexport
