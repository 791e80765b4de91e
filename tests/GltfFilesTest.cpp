// glTF files that are refused, and compressed ones. tests/blender has what other programs write.
#include "importer/text/Base64.h"
#include "support/GltfDocuments.h"

namespace mapexport {
namespace {

using namespace std::string_literals;

const fs::path kModels = MAPEXPORT_SOURCE_DIR "/tests/models/gltf";

// --- refusals ---

TEST_F(GltfTest, RefusalsNameThePlaceInTheWordsOfTheFile) {
  struct Case {
    const char* place;  ///< JSON pointer of what is replaced
    std::string value;
    const char* reason;
  };
  const Case cases[] = {
      {"/asset/version", "\"3.0\"", "is glTF of version \"3.0\""},
      {"/asset/version", "2", "asset.version: must be text, not a number"},
      {"/asset/minVersion", "\"2.1\"", "asset.minVersion: glTF of version \"2.1\" is needed"},
      {"/extensionsRequired", R"(["KHR_x"])", "extensionsRequired[0]: the extension \"KHR_x\""},
      {"/extensionsRequired", R"(["KHR_materials_volume","KHR_materials_x"])",
       "extensionsRequired[1]: the extension \"KHR_materials_x\" is not understood"},
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
      {"/accessors/0/sparse",
       R"({"count":4,"indices":{"bufferView":0,"componentType":5121},"values":{"bufferView":0}})",
       "accessors[0].sparse.count: 4, there are 3 elements"},
      {"/accessors/0", R"({"componentType":5126,"type":"VEC3"})", "accessors[0].count: is missing"},
      {"/bufferViews/0/byteStride", "8", "bufferViews[0].byteStride: 8, the elements of"},
      {"/bufferViews/0", R"({"buffer":0})", "bufferViews[0].byteLength: is missing"},
      {"/bufferViews/0/byteLength", "37", "bufferViews[0]: bytes 0 to 37, buffers[0] has 36"},
      {"/bufferViews/0/byteOffset", "1", "bufferViews[0]: bytes 1 to 37"},
      {"/buffers/0/byteLength", "37", "buffers[0].byteLength: 37, its data has 36 bytes"},
      {"/buffers/0", R"({"uri":"data:,"})", "buffers[0].byteLength: is missing"},
      {"/buffers/0/uri", "\"data:;base64,@@@@\"", "buffers[0].uri: its base64 data"},
      {"/buffers/0", R"({"byteLength":2,"uri":"data:;base64,AAA%3D AAAA"})", "its base64 data"},
      {"/buffers/0", R"({"byteLength":1,"uri":"data:;base64,A\r\n A%3D%3D"})", "buffers[0] has 1"},
      {"/buffers/0/uri", "\"http://h/a\"", "\"http://h/a\" is none beside the scene"},
      {"/buffers/0/uri", "\"a%20b.bin\"", "the file \"a%20b.bin\" can't be opened: No such file"},
      {"/buffers/0/uri", "\"a%00b.bin\"", "holds a NUL character"},
      {"/buffers/0/uri", "\".\"", "the file \".\" is not a regular file"},
      {"/buffers/0", R"({"byteLength":36})", "buffers[0].uri: is missing"},
      {"/skins", R"([{"joints":[3]}])", "skins[0].joints[0]: 3, there is only one"},
      {"/materials", R"([{"emissiveTexture":{"index":0}}])",
       "materials[0].emissiveTexture.index: 0, there are 0 textures"},
      {"/meshes/0/primitives/0/attributes", R"({"a\nb":""})",
       R"(attributes.a\u000Ab: must be an integer, not text)"},
      {"/meshes/0/primitives/0/attributes", R"({")" + std::string(400, 'x') + R"(":""})",
       "xxx...: must be an integer, not text"},
      {"/textures", R"([{"source":2}])", "textures[0].source: 2, there are 0 images"}};
  for (const Case& row : cases) {
    json document = WithPositions();
    document[json::json_pointer(row.place)] = json::parse(row.value);
    EXPECT_THAT(Refusal(Write("a.gltf", document.dump())), HasSubstr(row.reason)) << row.place;
  }
  std::string twice = WithPositions().dump();
  twice.insert(twice.find("\"POSITION\""), "\"POSITION\":0,");
  EXPECT_EQ(Refusal(Write("a.gltf", twice)),
            "meshes[0].primitives[0].attributes.POSITION: is given twice");
  EXPECT_EQ(Refusal(Write("a.gltf", "{\"a\":1,\n\"b\":2,,}")),
            "line 2, column 7: a member's name in quotes was expected");
}

TEST_F(GltfTest, ChunksOfBinaryFiles) {
  const json document = WithPositions();
  const std::string odd = Chunk("odd ", "1234");
  const std::pair<std::string, const char*> cases[] = {
      {Glb(document, ""), "not refused"},
      {Glb(document, odd), "not refused"},
      {Glb(document, "") + "trailing", "not refused"},
      {Glb(document, "123"), ": there is no BIN chunk"},
      {Glb(document, odd.substr(0, 9)), "not refused"},
      {Glb(document, Chunk("BIN\0"s, "1234").substr(0, 11)),
       "the BIN chunk says 4 bytes, 3 are left"},
      {"glTF\2\0\0\0\5\0\0\0"s, "byte 12: there is no JSON chunk"},
      {"glTF\2\0\0\0\x14\0\0\0"s + odd, "byte 12: is no JSON chunk"}};
  for (const auto& [bytes, reason] : cases) {
    EXPECT_THAT(Refusal(Write("a.glb", bytes)), HasSubstr(reason)) << testing::PrintToString(bytes);
  }
}

// --- sharing, and too much of it ---

TEST_F(GltfTest, CompressedDataIsSharedAndHeldAgainstItsAccessors) {
  // The first primitive once more, with other accessors of the same stream or view.
  constexpr const char* kDracoTwice = R"([{"op":"copy","from":"/accessors/0","path":"/accessors/-"},
    {"op":"copy","from":"/accessors/1","path":"/accessors/-"},
    {"op":"copy","from":"/meshes/0/primitives/0","path":"/meshes/0/primitives/-"},
    {"op":"replace","path":"/meshes/0/primitives/1/indices","value":4},
    {"op":"replace","path":"/meshes/0/primitives/1/attributes/POSITION","value":5}])";
  constexpr const char* kMeshoptTwice =
      R"([{"op":"copy","from":"/bufferViews/0","path":"/bufferViews/-"},
    {"op":"copy","from":"/accessors/0","path":"/accessors/-"},
    {"op":"replace","path":"/accessors/3/bufferView","value":3},
    {"op":"copy","from":"/meshes/0/primitives/0","path":"/meshes/0/primitives/-"},
    {"op":"replace","path":"/meshes/0/primitives/1/attributes/POSITION","value":3}])";
  struct Case {
    const char* file;
    const char* patch;
    const char* reason;
    std::size_t triangles = 0;
  };
  const Case cases[] = {
      {"draco.glb", kDracoTwice, "not refused", 192},
      {"meshopt.glb", kMeshoptTwice, "not refused", 192},
      {"draco.glb", R"([{"op":"replace","path":"/accessors/0/count","value":93}])",
       "accessors[0].count: 93, its Draco data has 96 indices"},
      {"draco.glb", R"([{"op":"replace","path":"/accessors/2/count","value":26}])",
       "accessors[2].count: 26, its Draco data has 25 vertices"},
      {"draco.glb", R"([{"op":"replace","path":"/accessors/1/componentType","value":7}])",
       "accessors[1].componentType: 7 is not known"},
      {"draco.glb", R"([{"op":"replace","path":"/bufferViews/0/byteLength","value":100}])",
       "meshes[0].primitives[0].extensions.KHR_draco_mesh_compression: its data is damaged"},
      {"draco.glb",
       R"([{"op":"replace","value":9,"path":"/meshes/0/primitives/0/extensions/)"
       R"(KHR_draco_mesh_compression/attributes/POSITION"}])",
       "KHR_draco_mesh_compression.attributes.POSITION: its data has no attribute 9"},
      {"draco.glb",
       R"([{"op":"remove",
            "path":"/meshes/0/primitives/0/extensions/KHR_draco_mesh_compression/bufferView"}])",
       "KHR_draco_mesh_compression.bufferView: is missing"},
      {"draco.glb", R"([{"op":"remove","path":"/meshes/0/primitives/0/indices"}])",
       "meshes[0].primitives[0].indices: is missing"}};
  for (const Case& row : cases) {
    const auto [document, binary] = PartsOfGlb(kModels / row.file);
    const std::string path =
        Write("a.glb", Glb(document.patch(json::parse(row.patch)), Chunk("BIN\0"s, binary)));
    EXPECT_THAT(Refusal(path), HasSubstr(row.reason));
    if (row.triangles > 0) {
      EXPECT_EQ(TrianglesOf(ImportScene(path, {})), row.triangles) << row.file;
    }
  }
}

TEST_F(GltfTest, FewBytesDoNotMakeMuch) {
  // Points without data, in ever more primitives.
  json points = json::parse(R"({"asset":{"version":"2.0"},"nodes":[{"mesh":0}],"meshes":[{}],
      "accessors":[{"componentType":5121,"count":65536,"type":"VEC3"}]})");
  const json primitive = {{"mode", 0}, {"attributes", {{"POSITION", 0}}}};
  points["meshes"][0]["primitives"] = json::array();
  for (int i = 0; i < 600; ++i) points["meshes"][0]["primitives"].push_back(primitive);
  // A long text for many nodes.
  json texts =
      json::parse(R"({"asset":{"version":"2.0"},"nodes":[],"meshes":[{"primitives":[]}]})");
  texts["meshes"][0]["extras"]["userProperties"] = std::string(1U << 20, 'a');
  for (int i = 0; i < 100; ++i) texts["nodes"].push_back({{"mesh", 0}});
  // One stream by many ranges of bytes.
  auto [streams, binary] = PartsOfGlb(kModels / "draco.glb");
  json& primitives = streams["meshes"][0]["primitives"];
  for (std::size_t i = 1; i < 40; ++i) {
    streams["bufferViews"].push_back({{"buffer", 0}, {"byteLength", 360 + i}});
    primitives.push_back(primitives[0]);
    primitives[i]["extensions"]["KHR_draco_mesh_compression"]["bufferView"] = i;
  }
  streams["buffers"][0]["byteLength"] = 400;
  const std::pair<std::string, const char*> cases[] = {
      {Glb(points, ""), "values in all, more than a file of this size can hold"},
      {Glb(texts, ""), "bytes of names and keywords in all, more than a file"},
      {Glb(streams, Chunk("BIN\0"s, binary + std::string(40, ' '))),
       "compressed bytes, more than a file"}};
  for (const auto& [bytes, reason] : cases) {
    EXPECT_THAT(Refusal(Write("a.glb", bytes)), HasSubstr(reason));
  }
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
    EXPECT_THAT(Refusal(Write("a.gltf", document.dump())),
                HasSubstr("EXT_meshopt_compression" + std::string(reason)));
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
