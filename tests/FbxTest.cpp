// FBX files: what arrives in the host's scene. tests/blender has one in binary.
#include "support/ImportedScenes.h"

namespace mapexport {
namespace {

void Replace(std::string& text, const std::string& old, const std::string& now) {
  text.replace(text.find(old), old.size(), now);
}

/// Puts properties in front of those that an object has.
void AddProperties(std::string& text, const std::string& object, const std::string& lines) {
  text.insert(text.find('{', text.find("Properties70", text.find(object))) + 1, "\n" + lines);
}

TEST_F(ImporterTest, FbxInstancesWhoseMaterialsCannotBeTold) {
  std::string text = Fbx();
  Replace(text, "Material::RedMat", "Material::GreenMat");
  EXPECT_THAT(RemarksOf(Import("doubt.fbx", text)),
              Contains(HasSubstr("shared-mesh-materials: 2 nodes show")));
}

TEST_F(ImporterTest, FbxInstancesHaveTheirMaterialsAndTheirWholeText) {
  // The library cuts long texts, and forgets the second and the third material.
  const std::string filling(2000, 'x');
  std::string text = Fbx();
  text.insert(text.find("climbable"), filling + "&lf;");
  const ImportedScene imported = Import("long.fbx", text);
  const std::vector<SceneMaterial>& materials = imported.scene.materials;
  for (const char* name : {"Green", "Red", "Blue"}) {
    const SceneNode& node = Named(imported, name);
    EXPECT_EQ(node.userProperties, name == std::string("Green")
                                       ? "floorface\r\n" + filling + "\nclimbable\r\n"
                                       : "floorface\r\nclimbable\r\n");
    EXPECT_EQ(node.mesh, Named(imported, "Green").mesh);
    EXPECT_EQ(materials.at(static_cast<std::size_t>(node.material)).name, node.name + "Mat");
  }
  EXPECT_EQ(Named(imported, "Green").objectTransform.rows[3], (Point3{0, 20, 0}));
  EXPECT_EQ(materials.at(2).diffuse, (Color{0, 0, 1}));
  EXPECT_THAT(RemarksOf(imported),
              ElementsAre("note file-unit: the file's unit is 2.54 cm; its numbers are kept"));
}

TEST_F(ImporterTest, FbxKeywordsHiddenNodesAndMetres) {
  std::string text = Fbx();
  Replace(text, "2.53999997", "100");
  AddProperties(text, "Geometry::", R"(P: "45PlusFloor", "Integer", "", "A+U", 1)");
  AddProperties(text, "Model::Green", R"(P: "Visibility", "Visibility", "", "A", 0
      P: "NotRendered", "double", "Number", "A+U", 1
      P: "userProperties", "KString", "", "A+U", "one, two\nthree;four")");
  AddProperties(text, "Model::Blue",
                R"(P: "Visibility Inheritance", "Visibility Inheritance", "", "", 0
      P: "notshownplan", "KString", "", "A+U", "Yes"
      P: "notcollidable", "KString", "", "A+U", "maybe"
      P: "NotRendered", "Bool", "", "A+U", 0)");
  for (const char* child : {"1001", "1002"}) {
    Replace(text, std::string(child) + ", 0\n", std::string(child) + ", 1000\n");
  }
  const ImportedScene kept = Import("hidden.fbx", text);
  EXPECT_EQ(Named(kept, "Green").userProperties,
            "one\ntwo\nthree\nfour\r\nfloorface\r\nclimbable\r\nnotrendered\r\n45plusfloor\r\n");
  EXPECT_EQ(Named(kept, "Blue").userProperties,
            "floorface\r\nclimbable\r\nnotshownplan\r\n45plusfloor\r\n");
  EXPECT_EQ(Named(kept, "Red").objectTransform,
            Rows({100, 0, 0}, {0, 100, 0}, {0, 0, 100}, {0, 2000, 0}));
  EXPECT_THAT(RemarksOf(kept),
              ElementsAre("note scale: lengths are multiplied by 100; the file's unit is 100 cm",
                          "note hidden-nodes: 1 mesh is hidden in the file and kept: \"Green\"",
                          HasSubstr("idle-member: the property \"notcollidable\" (\"maybe\")")));

  // In Blender each node hides itself alone, in other tools what is below it, too.
  for (const bool byBlender : {true, false}) {
    if (!byBlender) Replace(text, "Creator: \"Blender", "Creator: \"Other");
    const ImportedScene shown =
        ImportScene(Write("hidden.fbx", text), {.scale = 2.0f, .skipHidden = true});
    EXPECT_EQ(Named(shown, "Green").mesh, nullptr);
    EXPECT_EQ(Named(shown, "Red").mesh != nullptr, byBlender);
    EXPECT_NE(Named(shown, "Blue").mesh, nullptr);
    EXPECT_THAT(RemarksOf(shown),
                ElementsAre("note scale: lengths are multiplied by 2; the file's unit is 100 cm",
                            HasSubstr("idle-member"),
                            HasSubstr(byBlender ? "1 hidden node" : "2 hidden nodes")));
  }
}

TEST_F(ImporterTest, FbxOffsetsAndNames) {
  std::string text = Fbx();
  const std::string offset =
      "P: \"GeometricTranslation\", \"Vector3D\", \"Vector\", \"\", 10, 0, 0.25\n"
      "P: \"GeometricRotation\", \"Vector3D\", \"Vector\", \"\", 0, 0, -90\n"
      "P: \"GeometricScaling\", \"Vector3D\", \"Vector\", \"\", 1, 1, 0.5\n";
  AddProperties(text, "Model::Green", offset);
  AddProperties(text, "Model::Red", offset);
  AddProperties(text, "Model::Blue", offset);
  AddProperties(text, "Model::Red", R"(P: "Lcl Rotation", "Lcl Rotation", "", "A", 0, 0, 90)");
  Replace(text, "1001, 0\n", "1001, 1000\n");
  Replace(text, "C: \"OO\", 1003, 1002\n", "");
  Replace(text, "Model::Blue", "Model::a\xCE\xB2\xE3\x82\xAB\xF0\x9F\x98\x82");
  Replace(text, "Model::Red", "Model::&quot;'&amp;&quot;");
  const ImportedScene imported = Import("offsets.fbx", text);
  const Matrix3 own = Rows({0, -1, 0}, {1, 0, 0}, {0, 0, 0.5f}, {10, 20, 0.25f});
  EXPECT_EQ(Named(imported, "Green").objectTransform, own);
  // A node without a mesh has its offset, too; none has those of its ancestors.
  const SceneNode& helper = Named(imported, "a\xCE\xB2\xE3\x82\xAB\xF0\x9F\x98\x82");
  EXPECT_EQ(helper.objectTransform.rows[3], (Point3{10, -20, 0.25f}));
  const Point3 place = Named(imported, "\"'&\"").objectTransform.rows[3];
  EXPECT_LT(Length(place - Point3{0, 30, 0.25f}), 2e-5f);
}

}  // namespace
}  // namespace mapexport
