// FBX files: what arrives in the host's scene.
#include "support/ImportedScenes.h"

namespace mapexport {
namespace {

TEST_F(ImporterTest, FbxInstancesWhoseMaterialsCannotBeTold) {
  std::string text = Fbx();
  text.replace(text.find("Material::RedMat"), 16, "Material::GreenMat");
  EXPECT_THAT(RemarksOf(Import("doubt.fbx", text)),
              Contains(HasSubstr("shared-mesh-materials: 2 nodes show")));
}

TEST_F(ImporterTest, UserTextsThatTheLibraryCutsAreWhole) {
  const std::string filling(2000, 'x');
  std::string text = Fbx();
  text.insert(text.find("climbable"), filling + "&lf;");
  const ImportedScene fbx = Import("long.fbx", text);
  EXPECT_EQ(Named(fbx, "Green").userProperties, "floorface\r\n" + filling + "\nclimbable\r\n");
  EXPECT_THAT(RemarksOf(fbx), testing::Each(HasSubstr("file-unit")));
}

TEST(BlenderFileTest, UserTextInAsciiAndBinaryFbx) {
  for (const char* name : {"instances_ascii.fbx", "instances.fbx"}) {
    const ImportedScene imported = ImportScene(BlenderFile(name), {});
    const std::vector<const SceneNode*> nodes = NodesOf(imported);
    ASSERT_EQ(nodes.size(), 3u) << name;
    // The library forgets the second and the third material; the file has one for each node.
    const std::vector<SceneMaterial>& materials = imported.scene.materials;
    for (const SceneNode* node : nodes) {
      EXPECT_EQ(node->userProperties, "floorface\r\nclimbable\r\n");
      EXPECT_EQ(node->mesh, nodes[0]->mesh);
      EXPECT_EQ(materials.at(static_cast<std::size_t>(node->material)).name, node->name + "Mat");
    }
    EXPECT_EQ(nodes[0]->objectTransform.rows[3], (Point3{0, 20, 0}));
    EXPECT_EQ(materials.at(2).diffuse, (Color{0, 0, 1}));
    EXPECT_THAT(RemarksOf(imported),
                ElementsAre("note file-unit: the file's unit is 2.54 cm; its numbers are kept"));
  }
}

TEST(BlenderFileTest, FbxKeywordsHiddenNodesTextureScaleAndMetres) {
  const ImportedScene level = ImportScene(BlenderFile("level.fbx"), {});
  EXPECT_EQ(Named(level, "Floor").userProperties,
            "one\ntwo\nthree\nfour\r\nfloorface\r\nclimbable\r\n");
  EXPECT_EQ(Named(level, "Below").userProperties, "notshownplan\r\n");
  EXPECT_EQ(Named(level, "Below").objectTransform,
            Rows({100, 0, 0}, {0, 100, 0}, {0, 0, 100}, {100, 200, 300}));
  // Scaled by 4 and 2, then turned by 90 degrees, then moved.
  const Matrix3& uvs = *level.scene.materials.at(0).diffuseMap->uvTransform;
  const Matrix3 expected = Rows({0, 4, 0}, {-2, 0, 0}, {0, 0, 1}, {0.25f, 0.5f, 0});
  for (std::size_t r = 0; r < 4; ++r) EXPECT_LT(Length(uvs.rows[r] - expected.rows[r]), 1e-6f);
  EXPECT_THAT(RemarksOf(level),
              ElementsAre("note scale: lengths are multiplied by 100; the file's unit is 100 cm",
                          "note hidden-nodes: 1 mesh is hidden in the file and kept: \"Hidden\"",
                          HasSubstr("idle-member: the property \"notcollidable\" (\"maybe\")"),
                          "left-out: left out: 1 morph target"));

  const ImportedScene shown =
      ImportScene(BlenderFile("level.fbx"), {.scale = 2.0f, .skipHidden = true});
  EXPECT_EQ(Named(shown, "Hidden").mesh, nullptr);
  EXPECT_NE(Named(shown, "Below").mesh, nullptr) << "in Blender each node hides itself alone";
  EXPECT_EQ(TrianglesOf(shown), 3u);
  EXPECT_THAT(
      RemarksOf(shown),
      ElementsAre("note scale: lengths are multiplied by 2; the file's unit is 100 cm",
                  HasSubstr("idle-member"), "left-out: left out: 1 morph target, 1 hidden node"));
}

TEST_F(ImporterTest, FbxOfOtherToolsHidesWhatIsBelow) {
  std::string text = Fbx();
  const auto replace = [&text](const std::string& old, const std::string& now) {
    text.replace(text.find(old), old.size(), now);
  };
  replace("Creator: \"Blender", "Creator: \"Other");
  const std::string place = "P: \"Lcl Translation\", \"Lcl Translation\", \"\", \"A\", 0, ";
  replace(place + "20", "P: \"Visibility\", \"Visibility\", \"\", \"A\", 0\n" + place + "20");
  replace(place + "-20",
          "P: \"Visibility Inheritance\", \"Visibility Inheritance\", \"\", \"\", 0\n"
          "P: \"NotRendered\", \"Bool\", \"\", \"U\", 1\n" +
              place + "-20");
  replace("1001, 0", "1001, 1000");
  replace("1002, 0", "1002, 1000");
  const ImportedScene shown =
      ImportScene(Write("hidden.fbx", text), {.scale = {}, .skipHidden = true});
  EXPECT_EQ(Named(shown, "Green").mesh, nullptr);
  EXPECT_EQ(Named(shown, "Red").mesh, nullptr);
  EXPECT_NE(Named(shown, "Blue").mesh, nullptr);
  EXPECT_EQ(Named(shown, "Blue").userProperties, "floorface\r\nclimbable\r\nnotrendered\r\n");
  EXPECT_THAT(RemarksOf(shown), Contains(HasSubstr("2 hidden nodes")));
}

TEST(BlenderFileTest, FbxOffsetsAndNames) {
  const ImportedScene imported = ImportScene(BlenderFile("offsets.fbx"), {});
  EXPECT_EQ(imported.scene.root.children.size(), 7u);
  for (const char* name : {"Plane001", "Line001", "Point001"}) {
    EXPECT_EQ(Named(imported, name).objectTransform,
              Rows({0, -1, 0}, {1, 0, 0}, {0, 0, 0.5f}, {10, 0, 0.25f}));
  }
  EXPECT_EQ(Named(imported, "Line001").object, SceneObject::kHelper);

  // Each of four nested boxes stands 40 from the middle, a quarter turn on, whatever its ancestors'
  // own offsets are.
  constexpr std::array<std::pair<const char*, Point3>, 4> kPlaces{{{"Box001", {40, 0, 0}},
                                                                   {"Box002", {0, 40, 0}},
                                                                   {"Box003", {-40, 0, 0}},
                                                                   {"Box004", {0, -40, 0}}}};
  for (const auto& [name, place] : kPlaces) {
    const Point3 off = Named(imported, name).objectTransform.rows[3] - place;
    EXPECT_LT(Length(off), 2e-5f) << name;
  }
  EXPECT_EQ(imported.scene.root.children.at(4).name, "a\xCE\xB2\xE3\x82\xAB\xF0\x9F\x98\x82");
  // Binary files have no entities.
  EXPECT_EQ(Named(imported, "&quot;").userProperties, "notrendered\r\n");
  EXPECT_EQ(Named(imported, "\"'&\"").objectTransform.rows[3], (Point3{-20, 20, 0}));
}

}  // namespace
}  // namespace mapexport
