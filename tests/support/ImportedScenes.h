// Scenes of foreign files, and what came of them.
#pragma once

#include "importer/ImportScene.h"
#include "scene/SceneError.h"
#include "support/Testing.h"

namespace mapexport {

class ImporterTest : public testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) const {
    mapexport::Write(folder_ / name, text);
    return (folder_ / name).string();
  }
  ImportedScene Import(const std::string& name, const std::string& text) const {
    return ImportScene(Write(name, text), {});
  }
  std::string Refusal(const std::string& path) const {
    try {
      ImportScene(path, {});
    } catch (const SceneError& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(path + ": "));
      EXPECT_THAT(error.what(), testing::Not(HasSubstr("\n")));
      return std::string(error.what()).substr(path.size() + 2);
    }
    return "not refused";
  }

  const TempFolder temporary_;
  const fs::path folder_ = temporary_.Path();
};

inline Matrix3 Rows(Point3 x, Point3 y, Point3 z, Point3 translation) {
  return {.rows = {x, y, z, translation}};
}

inline const Matrix3 kYUpAt0 = Rows({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 0});

/// All nodes below the root, in pre-order, by name.
inline void Collect(const SceneNode& node, std::vector<const SceneNode*>& nodes) {
  for (const SceneNode& child : node.children) {
    nodes.push_back(&child);
    Collect(child, nodes);
  }
}

inline std::vector<const SceneNode*> NodesOf(const ImportedScene& imported) {
  std::vector<const SceneNode*> nodes;
  Collect(imported.scene.root, nodes);
  return nodes;
}

inline const SceneNode& Named(const ImportedScene& imported, std::string_view name) {
  for (const SceneNode* node : NodesOf(imported)) {
    if (node->name == name) return *node;
  }
  throw std::runtime_error("no node " + std::string(name));
}

/// "code: text" of each.
inline std::vector<std::string> RemarksOf(const ImportedScene& imported) {
  std::vector<std::string> texts;
  for (const Remark& remark : imported.remarks) {
    texts.push_back((remark.kind == RemarkKind::kNote ? "note " : "") + remark.code + ": " +
                    remark.text);
  }
  return texts;
}

inline std::size_t TrianglesOf(const ImportedScene& imported) {
  std::size_t count = 0;
  for (const SceneNode* node : NodesOf(imported))
    count += node->mesh ? node->mesh->faces.size() : 0;
  return count;
}

/// A glTF document around these nodes (node 0 is the scene's only root); mesh 0 is a triangle with
/// material 0.
inline std::string Gltf(const std::string& nodes) {
  return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[)" + nodes +
         R"(],"meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]},
{"primitives":[{"attributes":{"POSITION":0}}]}],
"extensionsUsed":["KHR_texture_transform"],
"materials":[{"name":"Brick","doubleSided":true,"pbrMetallicRoughness":{
"baseColorFactor":[0.25,0.5,0.75,1],"baseColorTexture":{"index":0,"extensions":{
"KHR_texture_transform":{"offset":[0.1,0.2],"rotation":0.5,"scale":[2,3]}}}}}],
"textures":[{"source":0}],"images":[{"uri":"sub%20dir/br%C3%BCck.png"}],
"buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,)"
         R"(AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}],
"bufferViews":[{"buffer":0,"byteLength":36}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3",
"min":[0,0,0],"max":[1,1,0]}]})";
}

/// Three nodes, Green, Red and Blue, show one mesh, each with a material of its own.
inline std::string Fbx() {
  return Content(MAPEXPORT_SOURCE_DIR "/tests/models/instances.fbx");
}

}  // namespace mapexport
