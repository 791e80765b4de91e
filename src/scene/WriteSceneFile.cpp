// Writes scene files: members in the order of their description, none that has its default value.
#include <array>
#include <bit>

#include "scene/JsonWriter.h"
#include "scene/SceneFile.h"

namespace mapexport {

namespace {

using Layout = JsonWriter::Layout;

// Equality that tells -0 from 0, as the file does.
template <class T>
bool SameBits(const T& a, const T& b) {
  using Words = std::array<std::uint32_t, sizeof(T) / sizeof(std::uint32_t)>;
  return std::bit_cast<Words>(a) == std::bit_cast<Words>(b);
}

void WritePoint(JsonWriter& json, const Point3& p) {
  json.OpenArray(Layout::kOneLine);
  json.Float(p.x);
  json.Float(p.y);
  json.Float(p.z);
  json.CloseArray();
}

void WriteTransform(JsonWriter& json, const Matrix3& transform) {
  json.OpenArray(Layout::kOneLine);
  for (const Point3& row : transform.rows) WritePoint(json, row);
  json.CloseArray();
}

void WriteText(JsonWriter& json, std::string_view name, std::string_view text) {
  if (text.empty()) return;
  json.Key(name);
  json.Text(text);
}

void WriteColor(JsonWriter& json, std::string_view name, const Color& color) {
  if (SameBits(color, Color{})) return;
  json.Key(name);
  WritePoint(json, {color.r, color.g, color.b});
}

void WriteFloat(JsonWriter& json, std::string_view name, float number, float whenAbsent) {
  if (SameBits(number, whenAbsent)) return;
  json.Key(name);
  json.Float(number);
}

void WriteTexture(JsonWriter& json, const SceneTexture& texture) {
  json.OpenObject();
  if (!texture.isBitmap) WriteText(json, "class", "other");
  WriteText(json, "file", texture.file);
  if (texture.uvTransform) {
    json.Key("uvTransform");
    WriteTransform(json, *texture.uvTransform);
  }
  json.CloseObject();
}

void WriteSubMaterials(JsonWriter& json, const std::vector<int>& subMaterials) {
  json.OpenArray(Layout::kOneLine);
  for (const int index : subMaterials) {
    if (index < 0) {
      json.Word("null");
    } else {
      json.Integer(index);
    }
  }
  json.CloseArray();
}

void WriteMaterial(JsonWriter& json, const SceneMaterial& material) {
  static const SceneMaterial whenAbsent;
  json.OpenObject();
  WriteText(json, "name", material.name);
  if (material.materialClass == SceneMaterialClass::kMulti) WriteText(json, "class", "multi");
  if (material.materialClass == SceneMaterialClass::kOther) WriteText(json, "class", "other");
  WriteColor(json, "ambient", material.ambient);
  WriteColor(json, "diffuse", material.diffuse);
  WriteColor(json, "specular", material.specular);
  WriteFloat(json, "opacity", material.opacity, whenAbsent.opacity);
  WriteFloat(json, "shininess", material.shininess, whenAbsent.shininess);
  WriteFloat(json, "shininessStrength", material.shininessStrength, whenAbsent.shininessStrength);
  if (material.shading != whenAbsent.shading) {
    json.Key("shading");
    json.Integer(material.shading);
  }
  if (material.twoSided) {
    json.Key("twoSided");
    json.Word("true");
  }
  if (material.diffuseMap) {
    json.Key("diffuseMap");
    WriteTexture(json, *material.diffuseMap);
  }
  if (!material.subMaterials.empty()) {
    json.Key("subMaterials");
    WriteSubMaterials(json, material.subMaterials);
  }
  json.CloseObject();
}

void WriteFace(JsonWriter& json, const Face& face) {
  json.OpenArray(Layout::kOneLine);
  for (const std::uint32_t index : face.v) json.Integer(index);
  if (face.smGroup != 0 || face.MatID() != 0) json.Integer(face.smGroup);
  if (face.MatID() != 0) json.Integer(face.MatID());
  json.CloseArray();
}

void WriteTextureFace(JsonWriter& json, const TVFace& face) {
  json.OpenArray(Layout::kOneLine);
  for (const std::uint32_t index : face.t) json.Integer(index);
  json.CloseArray();
}

template <class Element>
void WriteList(JsonWriter& json, std::string_view name, const std::vector<Element>& list,
               void (*write)(JsonWriter&, const Element&)) {
  json.Key(name);
  json.OpenArray(Layout::kLines);
  for (const Element& element : list) write(json, element);
  json.CloseArray();
}

void WriteMesh(JsonWriter& json, const Mesh& mesh) {
  json.OpenObject();
  if (!mesh.verts.empty()) WriteList(json, "vertices", mesh.verts, WritePoint);
  if (!mesh.faces.empty()) WriteList(json, "faces", mesh.faces, WriteFace);
  if (!mesh.tVerts.empty()) {
    WriteList(json, "textureVertices", mesh.tVerts, WritePoint);
    WriteList(json, "textureFaces", mesh.tvFace, WriteTextureFace);
  }
  json.CloseObject();
}

void WriteNode(JsonWriter& json, const SceneNode& node) {
  static const SceneNode whenAbsent;
  json.OpenObject();
  WriteText(json, "name", node.name);
  if (!SameBits(node.objectTransform, whenAbsent.objectTransform)) {
    json.Key("objectTransform");
    WriteTransform(json, node.objectTransform);
  }
  if (node.wireColor != whenAbsent.wireColor) {
    json.Key("wireColor");
    json.OpenArray(Layout::kOneLine);
    for (const std::uint8_t component : node.wireColor) json.Integer(component);
    json.CloseArray();
  }
  WriteText(json, "userProperties", node.userProperties);
  if (node.material >= 0) {
    json.Key("material");
    json.Integer(node.material);
  }
  if (node.object == SceneObject::kHelper) WriteText(json, "object", "helper");
  if (node.object == SceneObject::kMesh && node.mesh == nullptr) {
    WriteText(json, "object", "mesh");
  }
  if (node.object == SceneObject::kMesh && node.mesh != nullptr) {
    json.Key("mesh");
    WriteMesh(json, *node.mesh);
  }
  if (!node.children.empty()) WriteList(json, "children", node.children, WriteNode);
  json.CloseObject();
}

}  // namespace

void WriteSceneFile(const Scene& scene, std::ostream& out) {
  JsonWriter json(out);
  json.OpenObject();
  WriteText(json, "format", "mapexport-scene");
  json.Key("version");
  json.Integer(1);
  if (!scene.materials.empty()) WriteList(json, "materials", scene.materials, WriteMaterial);
  json.Key("root");
  WriteNode(json, scene.root);
  json.CloseObject();
  json.Finish();
}

}  // namespace mapexport
