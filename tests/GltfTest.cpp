// glTF files: what arrives in the host's scene, and what is refused.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <tuple>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "fuzz/SceneRoundTrip.h"
#include "importer/ImportScene.h"
#include "importer/text/Base64.h"
#include "importer/text/UserText.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

const fs::path kModels = MAPEXPORT_SOURCE_DIR "/tests/models/gltf";

/// Percent-encoded, as data URIs may be.
template <class Number>
std::string DataUri(const std::vector<Number>& numbers) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string uri = "data:application/octet-stream,";
  std::vector<unsigned char> bytes(numbers.size() * sizeof(Number));
  std::memcpy(bytes.data(), numbers.data(), bytes.size());
  for (const unsigned char byte : bytes) {
    uri += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return uri;
}

/// A document whose node 0 shows a triangle.
json Triangle() {
  json document = json::parse(R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],
    "nodes":[{"name":"A","mesh":0}],"meshes":[{"primitives":[{"attributes":{}}]}]})");
  return document;
}

/// Adds an accessor with a buffer of its own; returns its index.
template <class Number>
std::size_t Add(json& document, const std::vector<Number>& numbers, const char* type,
                std::size_t count, int componentType) {
  const std::size_t bytes = numbers.size() * sizeof(Number);
  document["buffers"].push_back({{"byteLength", bytes}, {"uri", DataUri(numbers)}});
  const std::size_t index = document["buffers"].size() - 1;
  document["bufferViews"].push_back({{"buffer", index}, {"byteLength", bytes}});
  document["accessors"].push_back(
      {{"bufferView", index}, {"count", count}, {"type", type}, {"componentType", componentType}});
  return index;
}

std::size_t Floats(json& document, const std::vector<float>& numbers, const char* type,
                   std::size_t components) {
  return Add(document, numbers, type, numbers.size() / components, 5126);
}

json& Primitive(json& document) {
  return document["meshes"][0]["primitives"][0];
}

json WithPositions(const std::vector<float>& positions = {0, 0, 0, 1, 0, 0, 0, 1, 0}) {
  json document = Triangle();
  const std::size_t accessor = Floats(document, positions, "VEC3", 3);
  Primitive(document)["attributes"]["POSITION"] = accessor;
  return document;
}

class GltfTest : public testing::Test {
 protected:
  GltfTest() : folder_(fs::temp_directory_path() / ("gltf-test-" + std::to_string(getpid()))) {
    fs::create_directories(folder_);
  }
  ~GltfTest() override { fs::remove_all(folder_); }

  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return (folder_ / name).string();
  }
  ImportedScene Import(const json& document, const ImportOptions& options = {}) const {
    return ImportScene(Write("a.gltf", document.dump()), options);
  }
  static std::string RefusalOf(const std::string& path) {
    try {
      ImportScene(path, {});
    } catch (const SceneError& error) {
      return std::string(error.what()).substr(path.size() + 2);
    }
    return "not refused";
  }

  fs::path folder_;
};

const SceneNode& First(const ImportedScene& imported) {
  return imported.scene.root.children.at(0);
}

std::vector<Point3> FirstVertices(const ImportedScene& imported) {
  return First(imported).mesh == nullptr ? std::vector<Point3>() : First(imported).mesh->verts;
}

/// "code count" of what is left out.
std::vector<std::string> LeftOutOf(const ImportedScene& imported) {
  std::vector<std::string> items;
  for (const Remark& item : imported.leftOut) {
    items.push_back(item.code.substr(9) + " " + std::to_string(item.count));
  }
  return items;
}

std::vector<std::string> RemarksOf(const ImportedScene& imported) {
  std::vector<std::string> texts;
  for (const Remark& remark : imported.remarks) {
    texts.push_back(remark.code + ": " + remark.text);
  }
  return texts;
}

// --- files of other programs ---

/// Corners of all triangles in the world, each triangle from its least corner on.
std::vector<std::vector<Point3>> WorldTriangles(const SceneNode& node) {
  std::vector<std::vector<Point3>> triangles;
  for (std::size_t f = 0; node.mesh != nullptr && f < node.mesh->faces.size(); ++f) {
    std::vector<Point3> corners;
    for (const std::uint32_t v : node.mesh->faces[f].v) {
      const Point3 p = node.mesh->verts[v];
      const auto& rows = node.objectTransform.rows;
      corners.push_back(rows[0] * p.x + rows[1] * p.y + rows[2] * p.z + rows[3]);
    }
    triangles.push_back(corners);
  }
  for (const SceneNode& child : node.children) {
    const auto more = WorldTriangles(child);
    triangles.insert(triangles.end(), more.begin(), more.end());
  }
  return triangles;
}

class PackedTest : public testing::TestWithParam<const char*> {};

TEST_P(PackedTest, TrianglesAreThoseOfThePlainFile) {
  const auto wanted = WorldTriangles(ImportScene(kModels / "plain.gltf", {}).scene.root);
  const ImportedScene imported = ImportScene(kModels / (GetParam() + std::string(".glb")), {});
  const auto triangles = WorldTriangles(imported.scene.root);
  ASSERT_EQ(triangles.size(), wanted.size());
  const auto isNear = [](const std::vector<Point3>& a, const std::vector<Point3>& b) {
    for (std::size_t turn = 0; turn < 3; ++turn) {
      float off = 0;
      for (std::size_t k = 0; k < 3; ++k) off = std::max(off, Length(a[k] - b[(k + turn) % 3]));
      if (off < 0.2f) return true;  // of 300: positions have 11 bits and more
    }
    return false;
  };
  for (const auto& triangle : wanted) {
    EXPECT_TRUE(
        std::ranges::any_of(triangles, [&](const auto& other) { return isNear(triangle, other); }));
  }
  std::set<std::uint32_t> groups;
  const SceneNode* node = &First(imported);
  if (node->mesh == nullptr) node = &node->children.at(0);
  for (const Face& face : node->mesh->faces) groups.insert(face.smGroup);
  EXPECT_EQ(groups.size(), 1U);
  EXPECT_EQ(groups.count(0), 0U) << "the bump is smooth";
  if (GetParam() == std::string("quantized")) {
    EXPECT_EQ(node->name, "Bump") << "a nameless child holds the mesh";
    EXPECT_EQ(node->userProperties, "floorface\r\n");
  }
}

INSTANTIATE_TEST_SUITE_P(Files, PackedTest,
                         testing::Values("quantized", "meshopt", "instanced", "draco"));

TEST_F(GltfTest, DamagedBytesAreRefusedOrRead) {
  for (const char* name : {"meshopt.glb", "instanced.glb"}) {
    std::stringstream stream;
    stream << std::ifstream(kModels / name, std::ios::binary).rdbuf();
    const std::string bytes = stream.str();
    const auto attempt = [](const std::string& damaged) {
      const MemoryFile file(damaged);
      const std::string reason = RefusalOf(file.Path());
      EXPECT_THAT(reason, testing::Not(testing::IsEmpty()));
      EXPECT_THAT(reason, testing::Not(HasSubstr("\n")));
    };
    // What doesn't begin with "glTF" is no glTF file here, for want of a name.
    for (std::size_t i = 4; i < bytes.size(); ++i) {
      attempt(bytes.substr(0, i));
      for (const char* number : {"\xFF\xFF\xFF\xFF", "\x01\x80\x7F\x01", "9999"}) {
        attempt(std::string(bytes).replace(i, 4, number));
      }
    }
  }
}

// --- refusals ---

TEST_F(GltfTest, RefusalsNameThePlaceInTheWordsOfTheFile) {
  struct Case {
    const char* place;  ///< JSON pointer of what is replaced
    const char* value;
    const char* reason;
  };
  const Case cases[] = {
      {"/asset/version", "\"3.0\"", "is glTF of version \"3.0\""},
      {"/asset/version", "2", "asset.version: must be text, not a number"},
      {"/extensionsRequired", R"(["KHR_x"])", "extensionsRequired[0]: the extension \"KHR_x\""},
      {"/scene", "7", "scene: 7, there is only one"},
      {"/scenes/0/nodes", "[4]", "scenes[0].nodes[0]: 4, there is only one"},
      {"/scenes/0/nodes", "[0,0]", "scenes[0].nodes[1]: names nodes[0] once more"},
      {"/nodes/0/mesh", "7", "nodes[0].mesh: 7, there is only one"},
      {"/nodes/0/mesh", "-1", "nodes[0].mesh: -1 is out of range"},
      {"/nodes/0/mesh", "\"x\"", "nodes[0].mesh: must be an integer, not text"},
      {"/nodes/0/skin", "0", "nodes[0].skin: 0, there are 0 skins"},
      {"/nodes/0/children", "[0]", "nodes[0]: is recursive"},
      {"/nodes", R"([{"children":[1]},{"children":[2]},{"children":[1]}])",
       "nodes[2].children[0]: nodes[1] is a child of nodes[0] already"},
      {"/nodes", R"([{"children":[1]},{"name":"B"}])", "not refused"},
      {"/nodes", R"([{},{"children":[0]}])", "scenes[0].nodes[0]: nodes[0] is a child of nodes[1]"},
      {"/nodes/0/matrix", "[1,2,3]", "nodes[0].matrix: has 3 elements, must have 16"},
      {"/nodes/0/translation", "[1e39,0,0]", "nodes[0].translation[0]: 1e+39 is out of the range"},
      {"/meshes/0/primitives/0/mode", "7", "meshes[0].primitives[0].mode: 7 is out of range"},
      {"/meshes/0/primitives/0/attributes", "{}",
       "meshes[0].primitives[0].attributes.POSITION: is missing"},
      {"/meshes/0/primitives/0/attributes/POSITION", "3",
       "meshes[0].primitives[0].attributes.POSITION: 3, there is only one"},
      {"/meshes/0/primitives/0/indices", "0",
       "accessors[0].type: \"VEC3\", what it is used for needs \"SCALAR\""},
      {"/meshes/0/primitives/0/material", "0", "primitives[0].material: 0, there are 0 materials"},
      {"/accessors/0/type", "\"VEC9\"", "accessors[0].type: \"VEC9\", what it is used for"},
      {"/accessors/0/componentType", "5124", "accessors[0].componentType: 5124 is not known"},
      {"/accessors/0/count", "4", "accessors[0]: 4 elements of 12 bytes from byte 0 on"},
      {"/accessors/0/count", "1099511627776", "more than a file of this size can hold"},
      {"/accessors/0/byteOffset", "1099511627776",
       "from byte 1099511627776 on, bufferViews[0] has"},
      {"/accessors/0/bufferView", "1", "accessors[0].bufferView: 1, there is only one"},
      {"/accessors/0/sparse",
       R"({"count":1,"indices":{"bufferView":0,"componentType":5126},"values":{"bufferView":0}})",
       "accessors[0].sparse.indices.componentType: 5126"},
      {"/accessors/0/sparse",
       R"({"count":1,"indices":{"bufferView":0,"byteOffset":12,"componentType":5125},
           "values":{"bufferView":0}})",
       "accessors[0].sparse.indices: 1065353216, there are 3 elements"},
      {"/bufferViews/0/byteStride", "8", "bufferViews[0].byteStride: 8, the elements of"},
      {"/bufferViews/0/byteLength", "37", "bufferViews[0]: bytes 0 to 37, buffers[0] has 36"},
      {"/bufferViews/0/byteOffset", "1", "bufferViews[0]: bytes 1 to 37"},
      {"/buffers/0/byteLength", "37", "buffers[0].byteLength: 37, its data has 36 bytes"},
      {"/buffers/0/uri", "\"data:;base64,@@@@\"", "buffers[0].uri: its base64 data"},
      {"/buffers/0/uri", "\"http://h/a\"", "\"http://h/a\" is none beside the scene"},
      {"/buffers/0/uri", "\"a%20b.bin\"", "the file \"a%20b.bin\" can't be opened: No such file"},
      {"/buffers/0/uri", "\".\"", "the file \".\" is not a regular file"},
      {"/buffers/0", R"({"byteLength":36})", "buffers[0].uri: is missing"},
      {"/skins", R"([{"joints":[3]}])", "skins[0].joints[0]: 3, there is only one"},
      {"/materials", R"([{"emissiveTexture":{"index":0}}])",
       "materials[0].emissiveTexture.index: 0, there are 0 textures"},
      {"/textures", R"([{"source":2}])", "textures[0].source: 2, there are 0 images"}};
  for (const Case& row : cases) {
    json document = WithPositions();
    document[json::json_pointer(row.place)] = json::parse(row.value);
    EXPECT_THAT(RefusalOf(Write("a.gltf", document.dump())), HasSubstr(row.reason)) << row.place;
  }
  EXPECT_EQ(RefusalOf(Write("a.gltf", "{\"a\":1,\n\"b\":2,,}")),
            "line 2, column 7: a member's name in quotes was expected");
}

TEST_F(GltfTest, MeshoptStreamsAreHeldAgainstTheirCounts) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("count":3,"byteStride":13,"mode":"ATTRIBUTES")", ".byteStride: 13"},
      {R"("count":3,"byteStride":300,"mode":"ATTRIBUTES")", ".byteStride: 300"},
      {R"("count":4,"byteStride":2,"mode":"TRIANGLES")", ".count: 4, triangles have"},
      {R"("count":3,"byteStride":3,"mode":"INDICES")", ".byteStride: 3"},
      {R"("count":1000000,"byteStride":4,"mode":"INDICES")",
       ".count: 1000000, its 36 bytes can't hold so many"},
      {R"("count":3,"byteStride":12,"mode":"ATTRIBUTES","filter":"QUATERNION")", ".filter: does"},
      {R"("count":3,"byteStride":2,"mode":"INDICES","filter":"OCTAHEDRAL")", ".filter: is not"},
      {R"("count":3,"byteStride":12,"mode":"SOMETHING")", ".mode: \"SOMETHING\" is not known"},
      {R"("count":3,"byteStride":12,"mode":"ATTRIBUTES")", ": its data is damaged"}};
  for (const auto& [members, reason] : cases) {
    json document = WithPositions();
    document["bufferViews"][0]["extensions"]["EXT_meshopt_compression"] =
        json::parse(R"({"buffer":0,"byteLength":36,)" + std::string(members) + "}");
    EXPECT_THAT(RefusalOf(Write("a.gltf", document.dump())),
                HasSubstr("EXT_meshopt_compression" + std::string(reason)));
  }
}

// --- meshes ---

TEST_F(GltfTest, ModesOfPrimitives) {
  const std::pair<int, std::vector<std::string>> cases[] = {
      {0, {"points 5"}},
      {1, {"lines 2"}},
      {2, {"lines 5"}},
      {3, {"lines 4"}},
      {4, {"triangles 1"}},  // five corners: the second triangle lacks one
      {5, {}},
      {6, {}}};
  for (const auto& [mode, leftOut] : cases) {
    json document = WithPositions({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 2, 0});
    Primitive(document)["mode"] = mode;
    const ImportedScene imported = Import(document);
    EXPECT_EQ(LeftOutOf(imported), leftOut) << mode;
    const Mesh* const mesh = First(imported).mesh.get();
    if (mode < 4) {
      EXPECT_EQ(mesh, nullptr);
      continue;
    }
    std::vector<std::array<std::uint32_t, 3>> corners;
    for (const Face& face : mesh->faces) corners.push_back(face.v);
    using Corners = std::array<std::uint32_t, 3>;
    if (mode == 4) {
      EXPECT_THAT(corners, ElementsAre(Corners{0, 1, 2}));
    }
    if (mode == 5) {
      EXPECT_THAT(corners, ElementsAre(Corners{0, 1, 2}, Corners{2, 1, 3}, Corners{2, 3, 4}));
    }
    if (mode == 6) {
      EXPECT_THAT(corners, ElementsAre(Corners{0, 1, 2}, Corners{0, 2, 3}, Corners{0, 3, 4}));
    }
  }
}

TEST_F(GltfTest, ValuesOfAllKindsOfAccessors) {
  json document = Triangle();
  Primitive(document)["attributes"]["POSITION"] =
      Add<std::int8_t>(document, {-128, 0, 127, 0, 64, 0, 0, 0, 0, 127, 0, 0}, "VEC3", 3, 5120);
  document["bufferViews"][0]["byteStride"] = 4;
  document["accessors"][0]["normalized"] = true;
  EXPECT_THAT(FirstVertices(Import(document)),
              ElementsAre(Point3{-1, 0, 1}, Point3{64 / 127.0f, 0, 0}, Point3{0, 1, 0}));
  document["accessors"][0]["normalized"] = false;
  EXPECT_EQ(FirstVertices(Import(document))[0], (Point3{-128, 0, 127}));

  // Sparse values over zeros; corners beyond the vertices are told.
  json sparse = WithPositions({7, 8, 9, 1, 2, 3});
  sparse["accessors"][0] = json::parse(
      R"({"componentType":5126,"type":"VEC3","count":3,"sparse":{"count":2,
          "indices":{"bufferView":1,"componentType":5121},"values":{"bufferView":0}}})");
  const std::vector<std::uint8_t> indices{0, 2};
  sparse["buffers"].push_back({{"byteLength", 2}, {"uri", DataUri(indices)}});
  sparse["bufferViews"].push_back({{"buffer", 1}, {"byteLength", 2}});
  EXPECT_THAT(FirstVertices(Import(sparse)),
              ElementsAre(Point3{7, 8, 9}, Point3{0, 0, 0}, Point3{1, 2, 3}));
  Primitive(sparse)["indices"] =
      Add<std::uint16_t>(sparse, {0, 1, 2, 0, 1, 3, 65535, 0, 1}, "SCALAR", 9, 5123);
  sparse["accessors"].back()["bufferView"] = 2;
  Primitive(sparse)["indices"] = 1;
  EXPECT_THAT(LeftOutOf(Import(sparse)), ElementsAre("triangles 2"));
}

TEST_F(GltfTest, SkinnedMeshesStandWhereTheirJointsAre) {
  json document = WithPositions();
  json& attributes = Primitive(document)["attributes"];
  attributes["JOINTS_0"] =
      Add<std::uint8_t>(document, {0, 1, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0}, "VEC4", 3, 5121);
  attributes["WEIGHTS_0"] =
      Floats(document, {1, 0, 0, 0, 1, 0, 0, 0, 0.25f, 0.25f, 0, 0}, "VEC4", 4);
  document["nodes"] = json::parse(R"([{"name":"A","mesh":0,"skin":0,"translation":[50,0,0]},
      {"translation":[0,0,2]},{"translation":[0,10,0],"scale":[2,2,2]}])");
  document["scenes"][0]["nodes"] = {0, 1, 2};
  const std::size_t inverses = Floats(document, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0,  0, -1, 1,
                                                 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, 0, 0,  1},
                                      "MAT4", 16);
  document["skins"] = {{{"joints", {1, 2}}, {"inverseBindMatrices", inverses}}};
  const ImportedScene imported = Import(document, {.scale = 1.0f});
  EXPECT_THAT(FirstVertices(imported),
              ElementsAre(Point3{0, 0, 1}, Point3{0, 10, 0}, Point3{-1, 6.5f, 0.5f}));
  EXPECT_EQ(First(imported).objectTransform.rows[3], (Point3{0, 0, 0}))
      << "the node's own transform plays no part";

  document["skins"][0]["joints"] = {1};
  EXPECT_THAT(RefusalOf(Write("a.gltf", document.dump())),
              HasSubstr("attributes.JOINTS_0: 1, the skin has 1 joints"));
  document["skins"][0]["joints"] = {1, 2, 1};
  EXPECT_THAT(RefusalOf(Write("a.gltf", document.dump())),
              HasSubstr("skins[0].inverseBindMatrices: 2 matrices, there are 3 joints"));
}

TEST_F(GltfTest, MorphTargetsHaveTheirDefaultWeights) {
  json document = WithPositions();
  json& primitive = Primitive(document);
  const std::size_t first = Floats(document, {0, 0, 1, 0, 0, 1, 0, 0, 1}, "VEC3", 3);
  const std::size_t second = Floats(document, {4, 0, 0, 4, 0, 0, 4, 0, 0}, "VEC3", 3);
  primitive["targets"] = {{{"POSITION", first}}, {{"POSITION", second}}};
  EXPECT_EQ(FirstVertices(Import(document))[0], (Point3{0, 0, 0}));
  document["meshes"][0]["weights"] = {0.5, 0.25};
  document["nodes"].push_back({{"mesh", 0}, {"weights", {1, 0}}});
  document["scenes"][0]["nodes"] = {0, 1};
  const ImportedScene imported = Import(document);
  EXPECT_EQ(FirstVertices(imported)[0], (Point3{1, 0, 0.5f}));
  EXPECT_EQ(imported.scene.root.children[1].mesh->verts[0], (Point3{0, 0, 1}));
  EXPECT_THAT(LeftOutOf(imported), Contains("morphs 4"));
}

// --- materials ---

TEST_F(GltfTest, LooksOfMaterials) {
  json document = WithPositions();
  Primitive(document)["attributes"]["TEXCOORD_0"] = Floats(document, {0, 0, 1, 0, 0, 1}, "VEC2", 2);
  Primitive(document)["attributes"]["TEXCOORD_1"] = Floats(document, {5, 0, 1, 0, 0, 1}, "VEC2", 2);
  Primitive(document)["material"] = 0;
  document["textures"] = json::parse(R"([{"source":0},
    {"extensions":{"KHR_texture_basisu":{"source":1}}},
    {"extensions":{"EXT_texture_webp":{"source":2}}}])");
  document["images"] = json::parse(R"([{"uri":"a%20b.png"},{"uri":"b.ktx2"},
    {"bufferView":0,"mimeType":"image/webp"}])");
  struct Case {
    const char* material;
    Color diffuse;
    const char* file;
    float u;  ///< of the first texture vertex
    int shading;
  };
  const Case cases[] = {
      {R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}})", {1, 1, 1}, "a b.png", 0, 11},
      {R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":1,"texCoord":1}},
           "extensions":{"KHR_materials_unlit":{}}})",
       {1, 1, 1},
       "b.ktx2",
       5,
       9},
      {R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":2,"extensions":{
           "KHR_texture_transform":{"texCoord":1}}}}})",
       {1, 1, 1},
       "embedded0.webp",
       5,
       11},
      {R"({"pbrMetallicRoughness":{"baseColorFactor":[0,0,0,1]},"emissiveFactor":[1,0.5,0],
           "emissiveTexture":{"index":0}})",
       {1, 0.5f, 0},
       "a b.png",
       0,
       11},
      {R"({"emissiveFactor":[1,0,0],"emissiveTexture":{"index":0}})", {1, 1, 1}, "", 0, 11},
      {R"({"extensions":{"KHR_materials_pbrSpecularGlossiness":{"diffuseFactor":[0.5,0.5,0,1],
           "diffuseTexture":{"index":1}}}})",
       {0.5f, 0.5f, 0},
       "b.ktx2",
       0,
       11}};
  for (const Case& row : cases) {
    document["materials"] = {json::parse(row.material)};
    const ImportedScene imported = Import(document);
    const SceneMaterial& material = imported.scene.materials.at(0);
    EXPECT_EQ(material.diffuse, row.diffuse) << row.material;
    EXPECT_EQ(material.diffuseMap ? material.diffuseMap->file : "", row.file) << row.material;
    EXPECT_EQ(First(imported).mesh->tVerts.at(0), (Point3{row.u, 1, 0})) << row.material;
    EXPECT_EQ(material.shading, row.shading) << row.material;
    EXPECT_THAT(LeftOutOf(imported), ElementsAre("channels 1"));
  }
}

// --- nodes ---

TEST_F(GltfTest, ScenesInstancesAndHiddenNodes) {
  json document = WithPositions();
  document["nodes"].push_back({{"name", "B"},
                               {"extensions", {{"KHR_node_visibility", {{"visible", false}}}}},
                               {"children", {2}}});
  document["nodes"].push_back({{"name", "C"}, {"mesh", 0}});
  document["scenes"] = json::parse(R"([{"nodes":[0]},{"nodes":[0,1]},{}])");
  EXPECT_EQ(Import(document).scene.root.children.size(), 1U) << "the first";
  document["scene"] = 1;
  document["extensions"] = json::parse(
      R"({"KHR_lights_punctual":{"lights":[{},{}]},"KHR_materials_variants":{"variants":[{}]}})");
  document["cameras"] = {json::object()};
  const ImportedScene kept = Import(document);
  EXPECT_EQ(kept.scene.root.children.at(1).children.at(0).mesh, First(kept).mesh) << "shared";
  EXPECT_THAT(RemarksOf(kept),
              Contains("hidden-nodes: 1 mesh is hidden in the file and kept: \"C\""));
  EXPECT_THAT(LeftOutOf(kept), ElementsAre("variants 1", "scenes 2", "cameras 1", "lights 2"));
  const ImportedScene skipped = Import(document, {.scale = {}, .skipHidden = true});
  EXPECT_EQ(skipped.scene.root.children.at(1).children.at(0).mesh, nullptr);
  EXPECT_THAT(LeftOutOf(skipped), Contains("hidden 1"));

  document["nodes"][0]["extras"] = {{"climbable", 1}};
  document["nodes"][0]["translation"] = {1, 0, 0};
  const std::size_t places = Floats(document, {0, 0, 0, 0, 0, 5}, "VEC3", 3);
  document["nodes"][0]["extensions"]["EXT_mesh_gpu_instancing"]["attributes"]["TRANSLATION"] =
      places;
  const ImportedScene instanced = Import(document, {.scale = 1.0f});
  EXPECT_EQ(First(instanced).objectTransform.rows[3], (Point3{1, 0, 0}));
  const SceneNode& second = First(instanced).children.at(0);
  EXPECT_EQ(second.objectTransform.rows[3], (Point3{1, -5, 0}));
  EXPECT_EQ(
      std::tie(second.name, second.mesh, second.userProperties),
      std::tie(First(instanced).name, First(instanced).mesh, First(instanced).userProperties));
}

TEST_F(GltfTest, KeywordsInExtras) {
  struct Case {
    const char* node;
    const char* mesh;
    const char* text;
    const char* remark;  ///< empty: none
  };
  const Case cases[] = {
      {R"({"FloorFace":true,"climbable":1,"notrendered":"Yes"})", "{}",
       "floorface\r\nclimbable\r\nnotrendered\r\n", ""},
      {R"({"climbable":false,"floorface":0,"notrendered":"no","notshownplan":null})", "{}", "", ""},
      {R"({"userProperties":"floorface , climbable;a\\nb","floorface":false})", "{}",
       "floorface\nclimbable\na\nb", ""},
      {R"({"UDP3DSMAX":"a\r\nb"})", R"({"UserProperties":"a\r\nb","climbable":true})",
       "a\r\nb\r\nclimbable\r\n", ""},
      {R"({"climbable":true})", R"({"climbable":2,"45PlusFloor":"TRUE"})",
       "climbable\r\n45plusfloor\r\n", ""},
      {R"({"climbable":"perhaps"})", "{}", "",
       "the property \"climbable\" (\"perhaps\") of node \"A\" does nothing: its value is neither"},
      {"{}", R"({"floor_face":true})", "",
       "the property \"floor_face\" (true) of node \"A\" does nothing: it is no keyword; "
       "\"floorface\" is one"},
      {R"({"notrendered":[1]})", "{}", "", "\"notrendered\" (an array) of node \"A\" does nothing"},
      {R"({"userProperties":5})", "{}", "", "\"userProperties\" (5) of node \"A\" does nothing"},
      {R"({"size":5,"cyclesVisible":true,"\ud800":1,"note":"\ud800"})", "[1]", "", ""},
      {"7", "\"climbable\"", "", ""}};
  for (const Case& row : cases) {
    std::string text = WithPositions().dump();
    text.insert(text.find("\"name\":\"A\""), std::string("\"extras\":") + row.node + ",");
    text.insert(text.find("\"primitives\""), std::string("\"extras\":") + row.mesh + ",");
    const ImportedScene imported = ImportScene(Write("extras.gltf", text), {});
    EXPECT_EQ(First(imported).userProperties, row.text) << row.node;
    if (*row.remark == '\0') {
      EXPECT_THAT(RemarksOf(imported), ElementsAre(HasSubstr("scale: "))) << row.node;
    } else {
      EXPECT_THAT(RemarksOf(imported), Contains(HasSubstr(row.remark))) << row.node;
    }
  }
}

TEST(Base64Test, SoundAndBrokenTexts) {
  EXPECT_EQ(DecodeBase64("TWFu+/8="), "Man\xFB\xFF");
  EXPECT_EQ(DecodeBase64("TQ"), "M");
  EXPECT_EQ(DecodeBase64(""), "");
  for (const char* broken : {"T", "TWF u", "TWFu=TWF", "TW\xC3"}) {
    EXPECT_EQ(DecodeBase64(broken), std::nullopt) << broken;
  }
}

}  // namespace
}  // namespace mapexport
