// Foreign formats: what arrives in the host's scene, and OBJ files.
#include <numbers>

#include "importer/LimitRemarks.h"
#include "importer/obj/TriangulatePolygon.h"
#include "scene/NearKeywords.h"
#include "support/ImportedScenes.h"

namespace mapexport {
namespace {

std::set<std::uint32_t> GroupsOf(const Mesh& mesh, std::size_t begin, std::size_t end) {
  std::set<std::uint32_t> groups;
  for (std::size_t f = begin; f < end; ++f) groups.insert(mesh.faces[f].smGroup);
  return groups;
}

TEST_F(ImporterTest, ObjWithoutItsSideFileOrTriangles) {
  const ImportedScene missing =
      Import("a.obj",
             "mtllib no such.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\no Bare\nf 1 2 3 4\n"
             "o Red\nusemtl Red\nf 1 2 3\n");
  EXPECT_EQ(Named(missing, "Bare").material, -1);  // the reader's stand-in
  EXPECT_EQ(Named(missing, "Bare").mesh->faces.size(), 2u);
  EXPECT_THAT(Named(missing, "Bare").mesh->tVerts, IsEmpty());
  EXPECT_EQ(Named(missing, "Red").material, 0);
  ASSERT_EQ(RemarksOf(missing).size(), 1u);
  EXPECT_THAT(RemarksOf(missing).at(0), HasSubstr("\"no such.mtl\""));

  const ImportedScene lines = Import("lines.obj", "o Wire\nv 0 0 0\nv 1 0 0\nv 1 1 0\nl 1 2 3\n");
  EXPECT_EQ(Named(lines, "Wire").object, SceneObject::kHelper);
  EXPECT_THAT(RemarksOf(lines), ElementsAre(HasSubstr("no triangle"), HasSubstr("2 lines")));
}

TEST_F(ImporterTest, ObjSmoothingGroupsComeFromTheFile) {
  const std::string strip =
      "v 0 0 0\nv 0 1 0\nv 1 0 0\nv 1 1 0\nv 2 0 0\nv 2 1 0\nv 3 0 0\nv 3 1 0\n";
  const ImportedScene plain = Import(
      "plain.obj", strip + "o A\ns 1\nf 1 3 4 2\ns off\nf 3 5 6 4\ns 31\nf 5 7 8\ns 0\nf 5 8 6\n");
  const Mesh& mesh = *Named(plain, "A").mesh;
  std::vector<std::uint32_t> groups;
  for (const Face& face : mesh.faces) groups.push_back(face.smGroup);
  EXPECT_THAT(groups, ElementsAre(2u, 2u, 0u, 0u, 1u << 31, 0u));

  // More groups than bits: those that meet differ, the first and the third may share one.
  const ImportedScene many =
      Import("many.obj", strip + "s 7000\nf 1 3 4 2\ns 32\nf 3 5 6 4\ns 4294967295\nf 5 7 8 6\n");
  const Mesh& strips = *Named(many, "defaultobject").mesh;
  EXPECT_THAT(GroupsOf(strips, 0, 2), ElementsAre(2u));
  EXPECT_THAT(GroupsOf(strips, 2, 4), ElementsAre(4u));
  EXPECT_THAT(GroupsOf(strips, 4, 6), ElementsAre(2u));
}

TEST_F(ImporterTest, ObjNormalsCountBeforeSmoothingGroups) {
  // A ridge with a hard edge, all in one group, and two faces without normals in that group.
  const ImportedScene ridge =
      Import("ridge.obj",
             "v 0 0 0\nv 0 1 0\nv 1 0 1\nv 1 1 1\nv 2 0 0\nv 2 1 0\nv 3 0 1\nv 3 1 1\nvn -1 0 "
             "1\nvn 1 0 1\n"
             "vn 0 0 1\ns 1\nf 1//1 3//3 4//3 2//1\nf 3//2 5//2 6//2 4//2\nf 5 7 8 6\n");
  const Mesh& mesh = *Named(ridge, "defaultobject").mesh;
  EXPECT_THAT(GroupsOf(mesh, 0, 2), ElementsAre(2u));
  EXPECT_THAT(GroupsOf(mesh, 2, 4), ElementsAre(0u)) << "flat";
  EXPECT_THAT(GroupsOf(mesh, 4, 6), ElementsAre(2u));
}

TEST_F(ImporterTest, ObjStatementsInAllTheirForms) {
  Write(
      "w\xC3\xA4nde [1].mtl",
      "newmtl Old Wall\nKd 0.5\nTr 0.25\nillum 2\nmap_Kd -clamp on -s 2 4 -o 0.5 D:\\Art\\W 1.png\n"
      "newmtl Old Wall\nKd 1 1 1\nnewmtl Bare\nKd 1 x 1\nNs 1e39\nmap_kd -s 3 3 3 7\n");
  const ImportedScene imported =
      Import("\xC3\x9C (2).obj",
             "\xEF\xBB\xBFmtllib C:\\stuff\\w\xC3\xA4nde [1].mtl\r\rv -1. +0 1e0 # a comment\nv "
             "1 0 \\\n"
             "  0\nv 2 2 0 2\nv 0 1 0 1 0 0\nvt 0.5\nvn 0 0 1\ng Left  side\nf -4/1/1 2/1/ 3//1\n"
             "usemtl Old Wall\nf 1 3 4\no Tower\nf 2 3 4\ng Top\nusemtl Bare\nf 2 3 1\no\n"
             "g Left  side\nf 4 3 2\ncurv 0 1 1 2\n");
  ASSERT_EQ(imported.scene.root.children.size(), 2u);
  const SceneNode& side = imported.scene.root.children[0];
  EXPECT_EQ(side.name, "Left  side");
  EXPECT_EQ(side.mesh->faces.size(), 3u);
  EXPECT_THAT(side.mesh->verts,
              ElementsAre(Point3{-1, 0, 1}, Point3{1, 0, 0}, Point3{1, 1, 0}, Point3{0, 1, 0}));
  EXPECT_THAT(side.mesh->tVerts, ElementsAre(Point3{0.5f, 0, 0}, Point3{0, 0, 0}));
  // The first face comes before any material.
  EXPECT_THAT(imported.scene.materials.at(static_cast<std::size_t>(side.material)).subMaterials,
              ElementsAre(-1, 0, 1));
  EXPECT_EQ(Named(imported, "Tower").mesh->faces.size(), 2u);

  const SceneMaterial& wall = imported.scene.materials.at(0);
  EXPECT_EQ(wall.name, "Old Wall");
  EXPECT_EQ(wall.diffuse, (Color{0.5f, 0.5f, 0.5f}));
  EXPECT_EQ(wall.opacity, 0.75f);
  EXPECT_EQ(wall.diffuseMap->file, "D:\\Art\\W 1.png");
  EXPECT_EQ(wall.diffuseMap->uvTransform, Rows({2, 0, 0}, {0, 4, 0}, {0, 0, 1}, {0.5f, 0, 0}));
  EXPECT_EQ(imported.scene.materials.at(1).diffuseMap->file, "7");
  EXPECT_THAT(imported.sideFiles, ElementsAre((folder_ / "w\xC3\xA4nde [1].mtl").string()));
  EXPECT_THAT(RemarksOf(imported),
              ElementsAre("note object-groups: the name of 1 group within objects is not kept: an "
                          "object is one node",
                          HasSubstr("1 definition of materials"), HasSubstr("2 values"),
                          "left-out: left out: 1 curve or curved surface, 1 vertex colour"));
  EXPECT_EQ(imported.leftOut.size(), 2u);
}

TEST_F(ImporterTest, CornersThatTheLibraryCutsOffPolygonsAreCounted) {
  const ImportedScene imported =
      Import("folded.off",
             "OFF\n6 1 0\n20 40 20\n40 20 0\n10 30 0\n30 0 20\n10 10 0\n40 0 0\n6 0 1 2 3 4 5\n");
  EXPECT_EQ(TrianglesOf(imported), 2u);
  EXPECT_THAT(RemarksOf(imported), ElementsAre("left-out: left out: 2 corners of polygons that "
                                               "can't be triangulated as a whole"));
}

TEST(TriangulatePolygonTest, TrianglesCoverThePolygon) {
  const std::vector<std::vector<Point3>> polygons{
      {{0, 0, 5}, {4, 0, 5}, {4, 4, 5}, {0, 4, 5}},
      {{0, 0, 0}, {4, 0, 0}, {1, 1, 0}, {0, 4, 0}},                        // an arrow head
      {{0, 0, 0}, {0, 4, 0}, {1, 1, 0}, {4, 0, 0}},                        // clockwise
      {{0, 1, 0}, {0, 2, 0}, {0, 2, 3}, {0, 1, 3}, {0, 1, 2}, {0, 1, 1}},  // upright, straight
                                                                           // corners
      {{0, 0, 0}, {6, 0, 0}, {6, 6, 0}, {5, 6, 0}, {5, 1, 0}, {1, 1, 0}, {1, 6, 0}, {0, 6, 0}},
      {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}}};  // no area
  const auto normalOf = [](const Point3& a, const Point3& b, const Point3& c) {
    return CrossProd(b - a, c - a);
  };
  for (const std::vector<Point3>& p : polygons) {
    std::vector<PolygonTriangle> triangles;
    ASSERT_TRUE(TriangulatePolygon(p, triangles));
    EXPECT_EQ(triangles.size(), p.size() - 2);
    Point3 whole;
    for (std::size_t i = 2; i < p.size(); ++i) whole = whole + normalOf(p[0], p[i - 1], p[i]);
    float area = 0;  // overlaps and outsides would make it larger than the polygon's
    for (const auto& [a, b, c] : triangles) area += Length(normalOf(p[a], p[b], p[c]));
    EXPECT_FLOAT_EQ(area, Length(whole));
  }
  // Round, but for the rounding of its coordinates, and too large to be cut if it weren't.
  std::vector<Point3> disc;
  disc.reserve(100000);
  for (int i = 0; i < 100000; ++i) {
    const double angle = 2 * std::numbers::pi * i / 100000;
    disc.push_back({static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), 0});
  }
  std::vector<PolygonTriangle> triangles;
  EXPECT_TRUE(TriangulatePolygon(disc, triangles));
  std::vector<Point3> saw;
  saw.reserve(6000);
  for (int i = 0; i < 3000; ++i)
    saw.push_back({static_cast<float>(i), i % 2 == 0 ? 0.0f : 0.5f, 0});
  for (int i = 3000; i-- > 0;) saw.push_back({static_cast<float>(i), 9, 0});
  EXPECT_FALSE(TriangulatePolygon(saw, triangles));
}

TEST_F(ImporterTest, GltfSideFileWithAPercentEncodedName) {
  std::string text = Gltf(R"({"name":"A","mesh":0})");
  const std::size_t uri = text.find("data:");
  text.replace(uri, text.find('"', uri) - uri, "my%20b%C3%BCffer.bin");
  const std::string file = Write(
      "my b\xC3\xBC"
      "ffer.bin",
      std::string(36, '\0'));
  const ImportedScene imported = Import("percent.gltf", text);
  EXPECT_EQ(TrianglesOf(imported), 1u);
  EXPECT_THAT(imported.sideFiles, ElementsAre(file));
}

std::string Chain(int length) {
  std::ostringstream nodes;
  for (int i = 0; i < length; ++i) {
    nodes << (i == 0 ? "" : ",") << R"({"name":"n)" << i << '"';
    if (i + 1 < length) nodes << R"(,"children":[)" << i + 1 << ']';
    nodes << '}';
  }
  return nodes.str();
}

TEST_F(ImporterTest, NestingHasALimit) {
  EXPECT_EQ(NodesOf(Import("deep.gltf", Gltf(Chain(kMaxSceneDepth - 1)))).size(),
            static_cast<std::size_t>(kMaxSceneDepth - 1));
  EXPECT_THAT(Refusal(Write("deeper.gltf", Gltf(Chain(kMaxSceneDepth)))), HasSubstr("1000 levels"));
}

TEST_F(ImporterTest, UpAndScaleOverrideTheFormat) {
  const auto place = [this](const std::string& name, const std::string& text, UpAxis up,
                            std::optional<float> scale) {
    const ImportedScene imported =
        ImportScene(Write(name, text), {.up = up, .scale = scale, .keepLibraryScene = false});
    return NodesOf(imported).at(0)->objectTransform;
  };
  const std::string obj = "v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n";
  EXPECT_EQ(place("a.obj", obj, UpAxis::kY, {}), kYUpAt0);
  EXPECT_EQ(place("a.obj", obj, UpAxis::kZ, 0.5f),
            Rows({0.5f, 0, 0}, {0, 0.5f, 0}, {0, 0, 0.5f}, {0, 0, 0}));
  const std::string gltf = Gltf(R"({"name":"A","mesh":0,"translation":[1,2,3]})");
  EXPECT_EQ(place("a.gltf", gltf, UpAxis::kZ, {}),
            Rows({100, 0, 0}, {0, 100, 0}, {0, 0, 100}, {100, 200, 300}));
  EXPECT_EQ(place("a.gltf", gltf, UpAxis::kAuto, 1.0f),
            Rows({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {1, -3, 2}));
  EXPECT_THROW(place("a.gltf", gltf, UpAxis::kAuto, 3e38f), SceneError);
  const Matrix3 auto0 = place("a.fbx", Fbx(), UpAxis::kAuto, {});  // the file says z
  EXPECT_EQ(place("a.fbx", Fbx(), UpAxis::kZ, {}), auto0);
  EXPECT_EQ(place("a.fbx", Fbx(), UpAxis::kY, {}),
            Rows({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 20}));
}

TEST(NearKeywordsTest, WordsThatWereMeantToBeKeywords) {
  const std::pair<const char*, const char*> words[] = {{"floorface", ""},
                                                       {"FloorFace", "floorface"},
                                                       {"floorface ", "floorface"},
                                                       {"floor face", "floorface"},
                                                       {"floorfaces", "floorface"},
                                                       {"florface", "floorface"},
                                                       {"climable", "climbable"},
                                                       {"climbabel", "climbable"},
                                                       {"Not Colidable", "notcollidable"},
                                                       {"notcollidable3D", "notcollidable3d"},
                                                       {"notcollidable3", "notcollidable"},
                                                       {"45plusflor", "45plusfloor"},
                                                       {"notrendered=1", ""},
                                                       {"floor", ""},
                                                       {"", ""}};
  for (const auto& [word, keyword] : words) EXPECT_EQ(NearestKeyword(word), keyword) << word;

  Scene scene;
  scene.root.children.resize(2);
  scene.root.children[0].name = "Deck";
  scene.root.children[0].userProperties =
      "floorface\r\nClimbable\tnotshown\r\nfloorface, climbable\r\nthe floorface";
  scene.root.children[1].userProperties = "Climbable";
  const std::vector<NearKeyword> near = FindNearKeywords(scene);
  ASSERT_EQ(near.size(), 2u);
  EXPECT_THAT(Describe(near[1]).text, HasSubstr("\"floorface, climbable\""));
  EXPECT_THAT(near[0].nodes, ElementsAre("Deck", ""));
  EXPECT_THAT(Describe(near[0]).text,
              testing::AllOf(HasSubstr("\"Deck\""), HasSubstr("\"Climbable\""),
                             HasSubstr("\"climbable\"")));
}

TEST(LimitRemarksTest, TheLastOnesStandForTheRest) {
  Remarks remarks(10'000, {RemarkKind::kWarning, "near-keyword", "a", 2, 1, {"node"}});
  remarks.push_back({RemarkKind::kNote, "axes", std::string(9000, 'b') + "\u00e9"});
  LimitRemarks(remarks);
  ASSERT_EQ(remarks.size(), kMostRemarks);
  const Remark& rest = remarks[kMostRemarks - 2];
  EXPECT_EQ(rest.text, "5906 more warnings like these (near-keyword)");
  EXPECT_EQ(rest.stands, 5906U);
  EXPECT_EQ(rest.count, 11'812U);
  EXPECT_EQ(rest.nodes.size(), 5906U);
  EXPECT_EQ(remarks.back().text, std::string(kLongestRemark - 3, 'b') + "...");
  remarks = {{RemarkKind::kNote, "axes", std::string(kLongestRemark - 4, 'b') + "\u00e9bcd"}};
  LimitRemarks(remarks);  // between characters
  EXPECT_EQ(remarks[0].text, std::string(kLongestRemark - 4, 'b') + "...");
  remarks[0].nodes = {"short", std::string(kMostNodeBytes, 'n')};
  LimitRemarks(remarks);
  EXPECT_THAT(remarks[0].nodes, ElementsAre("short"));
}

TEST_F(ImporterTest, EqualNamesOfDifferentMaterialsAreTold) {
  Write("one.mtl",
        "newmtl Wall\xE9\nKd 1 0 0\nnewmtl Wall\xE8\nKd 0 1 0\nnewmtl Wall\xEA\nKd 1 0 0\n");
  const ImportedScene imported =
      Import("one.obj",
             "mtllib one.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl Wall\xE9\nf 1 2 3\n"
             "usemtl Wall\xE8\nf 1 2 3\nusemtl Wall\xEA\nf 1 2 3\n");
  EXPECT_THAT(RemarksOf(imported),
              ElementsAre(HasSubstr("equal-material-names: 1 material is unlike an earlier one")));
}

TEST_F(ImporterTest, ControlCharactersInNamesBecomeBlanks) {
  std::string text = Gltf(R"({"name":"A\u001b[2J\u007f\u0085\u00a0","mesh":0,)"
                          R"("extras":{"userProperties":"a\nb"}})");
  text.replace(text.find("Brick"), 5, R"(Br\nick\u0001)");
  text.replace(text.find("sub%20dir"), 9, R"(sub\tdir)");
  const ImportedScene imported = Import("controls.gltf", text);
  const SceneNode& node = Named(imported, "A [2J  \u00a0");
  EXPECT_EQ(node.userProperties, "a\nb") << "lines stay lines";
  EXPECT_EQ(imported.scene.materials[0].name, "Br ick ");
  EXPECT_THAT(imported.scene.materials[0].diffuseMap->file, HasSubstr("sub dir"));
  EXPECT_THAT(
      RemarksOf(imported),
      Contains(testing::StartsWith("control-characters: blanks replace 6 control characters")));
}

TEST_F(ImporterTest, Ac3dObjectsKeepTheirOwnPicture) {
  const ImportedScene track = Import("track.acc", R"(AC3Db
OBJECT world
kids 1
OBJECT poly
name "Bend"
texture "road.rgb" base
texture empty_texture skids
texture "shadow.rgb" shad
numvert 3
0 0 0
1 0 0
0 0 1
numsurf 1
SURF 0x20
mat 0
refs 3
0 0 0
1 1 0
2 0 1
kids 0
)");
  ASSERT_EQ(track.scene.materials.size(), 1u);
  ASSERT_TRUE(track.scene.materials[0].diffuseMap);
  EXPECT_EQ(track.scene.materials[0].diffuseMap->file, "road.rgb");
}

}  // namespace
}  // namespace mapexport
