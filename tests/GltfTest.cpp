// glTF files: what arrives in the host's scene.
#include "support/GltfDocuments.h"

namespace mapexport {
namespace {

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

TEST_F(GltfTest, PrimitivesOfFewVerticesOfALongListAndOfNone) {
  std::vector<float> positions(3 * 100);
  for (std::size_t v = 0; v < 100; ++v) positions[3 * v] = static_cast<float>(v);
  positions[3 * 50] = std::numeric_limits<float>::infinity();
  json document = WithPositions(positions);
  Primitive(document)["indices"] = Add<std::uint8_t>(
      document, {99, 7, 30, 7, 30, 50, 7, 30, 100, 30, 99, 7}, "SCALAR", 12, 5121);
  json& primitives = document["meshes"][0]["primitives"];
  primitives.push_back({{"attributes", {{"NORMAL", 0}}}});
  const ImportedScene imported = Import(document);
  EXPECT_THAT(FirstVertices(imported),
              ElementsAre(Point3{7, 0, 0}, Point3{30, 0, 0}, Point3{99, 0, 0}));
  using Corners = std::array<std::uint32_t, 3>;
  const std::vector<Face>& faces = First(imported).mesh->faces;
  EXPECT_THAT((std::vector<Corners>{faces.at(0).v, faces.at(1).v}),
              ElementsAre(Corners{2, 0, 1}, Corners{1, 2, 0}));
  EXPECT_THAT(LeftOutOf(imported), ElementsAre("primitives 1", "vertices 1", "triangles 2"));
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

  json& nodes = document["nodes"];
  nodes.push_back(nodes[0]);
  nodes[3]["scale"] = {-1, 1, 1};
  nodes[3]["name"] = "B";
  document["scenes"][0]["nodes"] = {0, 1, 2, 3};
  const ImportedScene both = Import(document, {.scale = 1.0f});
  const auto cornerOf = [&](const char* name, std::size_t corner) {
    const Mesh& mesh = *Named(both, name).mesh;
    return mesh.verts[mesh.faces.at(0).v.at(corner)];
  };
  EXPECT_EQ(cornerOf("B", 1), cornerOf("A", 2)) << "a mirrored node turns the triangles over";
  EXPECT_EQ(cornerOf("B", 2), cornerOf("A", 1));

  document["skins"][0]["joints"] = {1};
  EXPECT_THAT(Refusal(Write("a.gltf", document.dump())),
              HasSubstr("attributes.JOINTS_0: 1, the skin has 1 joints"));
  document["skins"][0]["joints"] = {1, 2, 1};
  EXPECT_THAT(Refusal(Write("a.gltf", document.dump())),
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
    Color diffuse{1, 1, 1};
    const char* file = "";
    float u = 0;  ///< of the first texture vertex
    int shading = 11;
    float opacity = 1;
  };
  const Case cases[] = {
      {.material = R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}})",
       .file = "a b.png"},
      {.material = R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":1,"texCoord":1}},
           "extensions":{"KHR_materials_unlit":{}}})",
       .file = "b.ktx2",
       .u = 5,
       .shading = 9},
      {.material = R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":2,"extensions":{
           "KHR_texture_transform":{"texCoord":1}}}}})",
       .file = "embedded0.webp",
       .u = 5},
      {.material = R"({"pbrMetallicRoughness":{"baseColorFactor":[0,0,0,1]},
           "emissiveFactor":[1,0.5,0],"emissiveTexture":{"index":0}})",
       .diffuse = {1, 0.5f, 0},
       .file = "a b.png"},
      {.material = R"({"emissiveFactor":[1,0,0],"emissiveTexture":{"index":0}})"},
      {.material = R"({"extensions":{"KHR_materials_pbrSpecularGlossiness":{
           "diffuseFactor":[0.5,0.5,0,1],"diffuseTexture":{"index":1}}}})",
       .diffuse = {0.5f, 0.5f, 0},
       .file = "b.ktx2"},
      {.material = R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0,"texCoord":1}},
           "extensions":{"KHR_materials_pbrSpecularGlossiness":{}}})"},
      {.material = R"({"pbrMetallicRoughness":{"baseColorFactor":[1,1,1,0.25]}})"},
      {.material = R"({"pbrMetallicRoughness":{"baseColorFactor":[1,1,1,0.25]},
           "alphaMode":"BLEND"})",
       .opacity = 0.25f},
      {.material = R"({"pbrMetallicRoughness":{"baseColorFactor":[1,1,1,0.25]},
           "alphaMode":"MASK"})",
       .opacity = 0},
      {.material = R"({"pbrMetallicRoughness":{"baseColorFactor":[1,1,1,0.25]},
           "alphaMode":"MASK","alphaCutoff":0.25})"}};
  for (const Case& row : cases) {
    document["materials"] = json::array({json::parse(row.material)});
    const ImportedScene imported = Import(document);
    const SceneMaterial& material = imported.scene.materials.at(0);
    EXPECT_EQ(material.diffuse, row.diffuse) << row.material;
    EXPECT_EQ(material.diffuseMap ? material.diffuseMap->file : "", row.file) << row.material;
    EXPECT_EQ(First(imported).mesh->tVerts.at(0), (Point3{row.u, 1, 0})) << row.material;
    EXPECT_EQ(material.shading, row.shading) << row.material;
    EXPECT_EQ(material.opacity, row.opacity) << row.material;
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
  document["cameras"] = json::array({json::object()});
  const ImportedScene kept = Import(document);
  EXPECT_EQ(kept.scene.root.children.at(1).children.at(0).mesh, First(kept).mesh) << "shared";
  EXPECT_THAT(RemarksOf(kept),
              Contains("note hidden-nodes: 1 mesh is hidden in the file and kept: \"C\""));
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

  // Said once of a parent, whose keywords count for its nameless child; and of a root, which is
  // kept.
  json document = WithPositions();
  document["nodes"] = json::parse(R"([{"name":"root","children":[1],
      "extras":{"climbable":true,"floor_face":true}},{"mesh":0}])");
  const ImportedScene imported = Import(document);
  EXPECT_EQ(First(imported).children.at(0).userProperties, "climbable\r\n");
  EXPECT_THAT(RemarksOf(imported), ElementsAre(HasSubstr("scale: "), HasSubstr("node \"root\"")));
  document["nodes"][0]["extras"].erase("climbable");
  EXPECT_THAT(RemarksOf(Import(document)), Contains(HasSubstr("node \"root\"")));
}

}  // namespace
}  // namespace mapexport
