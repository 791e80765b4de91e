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

/// "Green", a strip of two quads 300 m from its origin, each with a material of its own. A bone
/// moves its end by `height`; it is the node "Bone" below another node "Bone".
std::string SkinnedFbx(const std::string& height) {
  std::string text = Fbx();
  const auto replaceList = [&text](const std::string& list, const std::string& now) {
    const std::size_t from = text.find(list + ": *");
    text.replace(from, text.find('}', from) - from, now);
  };
  replaceList("Vertices",
              "Vertices: *18 {a: 30000,0,0,30000,1,0,30001,0,0,30001,1,0,30002,0,0,"
              "30002,1,0\n");
  replaceList("PolygonVertexIndex", "PolygonVertexIndex: *8 {a: 0,2,3,-2,2,4,5,-4\n");
  replaceList("Edges", "Edges: *1 {a: 0\n");
  replaceList("Normals", "Normals: *24 {a: 0,0,1,0,0,1,0,0,1,0,0,1,0,0,1,0,0,1,0,0,1,0,0,1\n");
  Replace(text, "AllSame", "ByPolygon");
  replaceList("Materials", "Materials: *2 {a: 0,1\n");
  Replace(text, "Model::Red", "Model::Bone");
  Replace(text, "Model::Blue", "Model::Bone");
  text.insert(text.find("\tMaterial: 1004"),
              "Deformer: 2000, \"Deformer::\", \"Skin\" {\nVersion: 101\n}\n");
  for (const char* cluster : {"2001", "2002"}) {
    text.insert(text.find("\tMaterial: 1004"),
                std::string("Deformer: ") + cluster + ", \"SubDeformer::\", \"Cluster\" {\n" +
                    "Indexes: *2 {\na: 4,5\n}\nWeights: *2 {\na: 1,1\n}\n"
                    "Transform: *16 {\na: 1,0,0,0,0,1,0,0,0,0,1,0,0,40," +
                    height +
                    ",1\n}\n"
                    "TransformLink: *16 {\na: 1,0,0,0,0,1,0,0,0,0,1,0,0,-20,0,1\n}\n}\n");
  }
  Replace(text, "1002, 0\n", "1002, 1001\n");
  for (const char* node : {"1001", "1002"})
    Replace(text, std::string("C: \"OO\", 1003, ") + node + "\n", "");
  Replace(text, "1005, 1001\n", "1005, 1000\n");
  Replace(text, "C: \"OO\", 1003, 1000\n",
          "C: \"OO\", 1003, 1000\nC: \"OO\", 2000, 1003\nC: \"OO\", 2001, 2000\n"
          "C: \"OO\", 1002, 2001\n");
  return text;
}

TEST_F(ImporterTest, FbxSkinsFollowTheirOwnBones) {
  const auto heightsOf = [](const ImportedScene& imported) {
    std::vector<float> heights;
    for (const Point3& p : Named(imported, "Green").mesh->verts) heights.push_back(p.z);
    std::ranges::sort(heights);
    return heights;
  };
  const ImportedScene posed = Import("posed.fbx", SkinnedFbx("2"));
  const Mesh& mesh = *Named(posed, "Green").mesh;
  EXPECT_THAT(heightsOf(posed), ElementsAre(0, 0, 0, 0, 2, 2));
  for (const Point3& p : mesh.verts) EXPECT_TRUE(p.y == 0 || p.y == 1) << p.y;
  // The edge between the materials was smooth.
  ASSERT_EQ(mesh.faces.size(), 4U);
  EXPECT_NE(mesh.faces[0].smGroup & mesh.faces[3].smGroup, 0U);
  EXPECT_NE(mesh.faces[0].MatID(), mesh.faces[3].MatID());

  EXPECT_THAT(heightsOf(Import("bound.fbx", SkinnedFbx("0.05"))), testing::Each(0));

  // An offset of the geometry comes before the matrix of the bone, which is for the node.
  std::string offset = SkinnedFbx("2");
  AddProperties(offset, "Model::Green",
                "P: \"GeometricScaling\", \"Vector3D\", \"Vector\", \"\", 2, 1, 1\n");
  const ImportedScene moved = Import("offset.fbx", offset);
  EXPECT_THAT(heightsOf(moved), ElementsAre(0, 0, 0, 0, 2, 2));
  const SceneNode& green = Named(moved, "Green");
  float right = 0;
  for (const Point3& p : green.mesh->verts) {
    right = std::max(right, (p * green.objectTransform).x);
  }
  EXPECT_EQ(right, 60004);

  // Both nodes "Bone" move it, or none that the file has.
  for (const char* link : {"C: \"OO\", 2002, 2000\nC: \"OO\", 1001, 2002\n", ""}) {
    std::string text = SkinnedFbx("2");
    Replace(text, "C: \"OO\", 2000, 1003\n", std::string("C: \"OO\", 2000, 1003\n") + link);
    if (*link == 0) Replace(text, "1002, 1001\n", "1002, 2002\n");
    const ImportedScene doubtful = Import("doubtful.fbx", text);
    EXPECT_THAT(heightsOf(doubtful), testing::Each(0));
    EXPECT_THAT(RemarksOf(doubtful), Contains(HasSubstr("1 skin that can't be posed")));
  }
}

}  // namespace
}  // namespace mapexport
