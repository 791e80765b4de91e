// Foreign formats: what arrives in the host's scene, from files written here and by Blender.
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numbers>
#include <set>
#include <sstream>
#include <utility>

#include <assimp/scene.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/LimitRemarks.h"
#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FbxLinks.h"
#include "importer/fbx/FoldHelperNodes.h"
#include "importer/obj/TriangulatePolygon.h"
#include "importer/rebuild/RebuildMesh.h"
#include "importer/text/HostText.h"
#include "scene/NearKeywords.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string BlenderFile(const std::string& name) {
  return MAPEXPORT_SOURCE_DIR "/tests/models/blender/" + name;
}

class ImporterTest : public testing::Test {
 protected:
  ImporterTest()
      : folder_(fs::temp_directory_path() / ("importer-test-" + std::to_string(getpid()))) {
    fs::create_directories(folder_);
  }
  ~ImporterTest() override { fs::remove_all(folder_); }

  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_ / name, std::ios::binary) << text;
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

  fs::path folder_;
};

Matrix3 Rows(Point3 x, Point3 y, Point3 z, Point3 translation) {
  return {.rows = {x, y, z, translation}};
}

const Matrix3 kYUpAt0 = Rows({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 0});

/// All nodes below the root, in pre-order, by name.
void Collect(const SceneNode& node, std::vector<const SceneNode*>& nodes) {
  for (const SceneNode& child : node.children) {
    nodes.push_back(&child);
    Collect(child, nodes);
  }
}

std::vector<const SceneNode*> NodesOf(const ImportedScene& imported) {
  std::vector<const SceneNode*> nodes;
  Collect(imported.scene.root, nodes);
  return nodes;
}

const SceneNode& Named(const ImportedScene& imported, const std::string& name) {
  for (const SceneNode* node : NodesOf(imported)) {
    if (node->name == name) return *node;
  }
  throw std::runtime_error("no node " + name);
}

/// "code: text" of each.
std::vector<std::string> RemarksOf(const ImportedScene& imported) {
  std::vector<std::string> texts;
  for (const ImportRemark& remark : imported.remarks) {
    texts.push_back((remark.kind == RemarkKind::kNote ? "note " : "") + remark.code + ": " +
                    remark.text);
  }
  return texts;
}

std::size_t TrianglesOf(const ImportedScene& imported) {
  std::size_t count = 0;
  for (const SceneNode* node : NodesOf(imported))
    count += node->mesh ? node->mesh->faces.size() : 0;
  return count;
}

std::set<std::uint32_t> GroupsOf(const Mesh& mesh, std::size_t begin, std::size_t end) {
  std::set<std::uint32_t> groups;
  for (std::size_t f = begin; f < end; ++f) groups.insert(mesh.faces[f].smGroup);
  return groups;
}

// --- OBJ ---

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

TEST_F(ImporterTest, ObjStatementsInAllTheirForms) {
  Write(
      "w\xC3\xA4nde [1].mtl",
      "newmtl Old Wall\nKd 0.5\nTr 0.25\nillum 2\nmap_Kd -clamp on -s 2 4 -o 0.5 D:\\Art\\W 1.png\n"
      "newmtl Old Wall\nKd 1 1 1\nnewmtl Bare\nKd 1 x 1\nNs 1e39\nmap_kd -s 3 3 3 7\n");
  const ImportedScene imported = Import(
      "\xC3\x9C (2).obj",
      "\xEF\xBB\xBFmtllib C:\\stuff\\w\xC3\xA4nde [1].mtl\r\no Tower\rv -1. +0 1e0 # a comment\nv "
      "1 0 \\\n"
      "  0\nv 2 2 0 2\nv 0 1 0 1 0 0\nvt 0.5\nvn 0 0 1\ng Left  side\nf -4/1/1 2/1/ 3//1\n"
      "usemtl Old Wall\nf 1 3 4\ng\nf 2 3 4\nusemtl Bare\nf 2 3 1\ng Left  side\nf 4 3 2\ncurv 0 1 "
      "1 2\n");
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
  EXPECT_EQ(imported.scene.root.children[1].name, "Tower");

  const SceneMaterial& wall = imported.scene.materials.at(0);
  EXPECT_EQ(wall.name, "Old Wall");
  EXPECT_EQ(wall.diffuse, (Color{0.5f, 0.5f, 0.5f}));
  EXPECT_EQ(wall.opacity, 0.75f);
  EXPECT_EQ(wall.diffuseMap->file, "D:\\Art\\W 1.png");
  EXPECT_EQ(wall.diffuseMap->uvTransform, Rows({2, 0, 0}, {0, 4, 0}, {0, 0, 1}, {0.5f, 0, 0}));
  EXPECT_EQ(imported.scene.materials.at(1).diffuseMap->file, "7");
  EXPECT_THAT(imported.sideFiles, ElementsAre((folder_ / "w\xC3\xA4nde [1].mtl").string()));
  EXPECT_THAT(RemarksOf(imported),
              ElementsAre(HasSubstr("1 definition of materials"), HasSubstr("2 values"),
                          "left-out: left out: 1 curve or curved surface, 1 vertex colour"));
  EXPECT_EQ(imported.leftOut.size(), 2u);
}

TEST_F(ImporterTest, ObjDefectsHaveALine) {
  const std::string vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
  const std::pair<std::string, std::string> defects[] = {
      {"f 1 2 0\n", "line 4: \"0\" has the index 0"},
      {"f 1 2 -4\n", "line 4: \"-4\" has an index beyond the list, which has 3 here"},
      {"f 1 2 4\nf 1 2 5\nf 1 2 3\n", "line 5: there is no vertex 5, the file has 3 vertices"},
      {"f 1/1 2 3\n", "line 4: there is no texture vertex 1, the file has 0 texture vertices"},
      {"f 1//2 2 3\nvn 0 0 1\n", "line 4: there is no normal 2, the file has 1 normal"},
      {"f 1 2 3/4/5/6\n", "line 4: \"3/4/5/6\" is no corner of a face"},
      {"f 1 2 99999999999999999999\n", "is no corner of a face"},
      {"f 1 2 x\n", "line 4: \"x\" is no corner of a face"},
      {"v 1,5 0 0\n", "line 4: \"1,5\" is no number"},
      {"v 1 2\n", "line 4: \"v 1 2\" has too few numbers"}};
  for (const auto& [statement, reason] : defects) {
    EXPECT_THAT(Refusal(Write("defect.obj", vertices + statement)), HasSubstr(reason));
  }
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

// --- smoothing ---

// --- glTF ---

/// A glTF document around these nodes (node 0 is the scene's only root); mesh 0 is a triangle with
/// material 0.
std::string Gltf(const std::string& nodes) {
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

// --- FBX ---

constexpr const char* kFbx = R"(; FBX 7.4.0 project file
FBXHeaderExtension: {
  FBXHeaderVersion: 1003
  FBXVersion: 7400
}
GlobalSettings: {
  Version: 1000
  Properties70: {
    P: "UpAxis", "int", "Integer", "",2
    P: "UpAxisSign", "int", "Integer", "",1
    P: "FrontAxis", "int", "Integer", "",1
    P: "FrontAxisSign", "int", "Integer", "",-1
    P: "CoordAxis", "int", "Integer", "",0
    P: "CoordAxisSign", "int", "Integer", "",1
  }
}
Objects: {
  Geometry: 10, "Geometry::", "Mesh" {
    Vertices: *12 {
      a: 0,0,0,1,0,0,1,1,0,0,1,0
    }
    PolygonVertexIndex: *4 {
      a: 0,1,2,-4
    }
    LayerElementMaterial: 0 {
      MappingInformationType: "AllSame"
      ReferenceInformationType: "IndexToDirect"
      Materials: *1 {
        a: 0
      }
    }
    Layer: 0 {
      LayerElement: {
        Type: "LayerElementMaterial"
        TypedIndex: 0
      }
    }
  }
  Model: 20, "Model::Say &quot;hi&quot;", "Mesh" {
    Version: 232
    Properties70: {
      P: "GeometricTranslation", "Vector3D", "Vector", "",100,0,0
      P: "UDP3DSMAX", "KString", "", "U", "floorface&cr;&lf;climbable&cr;&lf;"
    }
  }
  Model: 21, "Model::Child", "Null" {
    Version: 232
    Properties70: {
      P: "Lcl Translation", "Lcl Translation", "", "A",7,8,9
    }
  }
  Material: 30, "Material::Slate", "" {
    Version: 102
    ShadingModel: "phong"
    Properties70: {
      P: "DiffuseColor", "Color", "", "A",0.25,0.5,0.75
    }
  }
  Texture: 40, "Texture::t", "" {
    Type: "TextureVideoClip"
    Version: 202
    Properties70: {
      P: "Translation", "Vector", "", "A",0.5,0,0
      P: "Rotation", "Vector", "", "A",0,0,90
    }
    FileName: "D:\Art\slate.tga"
    RelativeFilename: "..\Art\slate.tga"
  }
}
Connections: {
  C: "OO",20,0
  C: "OO",21,20
  C: "OO",10,20
  C: "OO",30,20
  C: "OP",40,30, "DiffuseColor"
}
)";

/// Two nodes with the geometry, the second with a material of its own.
std::string FbxWithInstance(const std::string& material) {
  std::string text = kFbx;
  text.replace(text.find("  Material: 30"), 0,
               "  Model: 22, \"Model::Twin\", \"Mesh\" {\n    Version: 232\n  }\n  Material: 31, "
               "\"Material::" +
                   material + "\", \"\" {\n    Version: 102\n    ShadingModel: \"phong\"\n  }\n");
  return text.insert(text.rfind('}'), "  C: \"OO\",22,0\n  C: \"OO\",10,22\n  C: \"OO\",31,22\n");
}

TEST_F(ImporterTest, FbxInstancesHaveTheirOwnMaterials) {
  const ImportedScene told = Import("own.fbx", FbxWithInstance("Oak"));
  const auto materialOf = [&told](const char* name) {
    return told.scene.materials.at(static_cast<std::size_t>(Named(told, name).material)).name;
  };
  EXPECT_EQ(materialOf("Twin"), "Oak");
  EXPECT_EQ(materialOf("Say \"hi\""), "Slate");
  EXPECT_EQ(Named(told, "Twin").mesh, Named(told, "Say \"hi\"").mesh);
  EXPECT_THAT(RemarksOf(told), IsEmpty());

  const ImportedScene inDoubt = Import("doubt.fbx", FbxWithInstance("Slate"));
  EXPECT_THAT(RemarksOf(inDoubt), ElementsAre(HasSubstr("shared-mesh-materials: 1 node shows")));
}

TEST_F(ImporterTest, UserTextsThatTheLibraryCutsAreWhole) {
  const std::string filling(2000, 'x');
  std::string text = kFbx;
  text.insert(text.find("climbable"), filling + "&lf;");
  const ImportedScene fbx = Import("long.fbx", text);
  EXPECT_EQ(Named(fbx, "Say \"hi\"").userProperties, "floorface\r\n" + filling + "\nclimbable\r\n");
  EXPECT_THAT(RemarksOf(fbx), IsEmpty());
}

TEST(FbxLinksTest, DamagedTextsAreRefusedOrRead) {
  const std::string ascii = kFbx;
  const std::optional<FbxLinks> whole = ReadFbxLinks(ascii);
  ASSERT_TRUE(whole);
  EXPECT_EQ(whole->objects.size(), 4u);
  EXPECT_EQ(whole->links.size(), 4u);
  EXPECT_EQ(ascii.substr(whole->links.back().typeAt, 8), "OO\",30,2");
  EXPECT_FALSE(ReadFbxLinks(ascii.substr(0, ascii.size() - 3)));

  std::stringstream binary;
  binary << std::ifstream(BlenderFile("instances.fbx"), std::ios::binary).rdbuf();
  const std::string bytes = binary.str();
  ASSERT_TRUE(ReadFbxLinks(bytes));
  for (std::size_t i = 0; i < bytes.size(); i += 61) {
    ReadFbxLinks(std::string(bytes, 0, i));  // no reading beyond the end
    std::string changed = bytes;
    changed.replace(i, 4, "\xFF\xFF\xFF\xFF");
    ReadFbxLinks(changed);
  }
}

// --- options, keywords, names ---

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
  // The file says z; its child stands at (7, 8, 9).
  const Matrix3 auto0 = place("a.fbx", kFbx, UpAxis::kAuto, {});
  EXPECT_EQ(place("a.fbx", kFbx, UpAxis::kZ, {}), auto0);
  EXPECT_EQ(place("a.fbx", kFbx, UpAxis::kY, {}),
            Rows({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {100, 0, 0}));
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
  EXPECT_THAT(Describe(near[1]), HasSubstr("\"floorface, climbable\""));
  EXPECT_EQ(near[0].count, 2u);
  EXPECT_THAT(Describe(near[0]), testing::AllOf(HasSubstr("\"Deck\""), HasSubstr("\"Climbable\""),
                                                HasSubstr("\"climbable\"")));
}

TEST(LimitRemarksTest, TheLastOnesStandForTheRest) {
  ImportRemarks remarks(10'000, {RemarkKind::kWarning, "near-keyword", "a", 2});
  remarks.push_back({RemarkKind::kNote, "axes", std::string(9000, 'b') + "\u00e9"});
  LimitRemarks(remarks);
  ASSERT_EQ(remarks.size(), kMostRemarks);
  const ImportRemark& rest = remarks[kMostRemarks - 2];
  EXPECT_EQ(rest.text, "5906 more warnings like these (near-keyword)");
  EXPECT_EQ(rest.stands, 5906U);
  EXPECT_EQ(rest.count, 11'812U);
  EXPECT_EQ(remarks.back().text, std::string(kLongestRemark - 3, 'b') + "...");
  remarks = {{RemarkKind::kNote, "axes", std::string(kLongestRemark - 4, 'b') + "\u00e9bcd"}};
  LimitRemarks(remarks);  // between characters
  EXPECT_EQ(remarks[0].text, std::string(kLongestRemark - 4, 'b') + "...");
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
  EXPECT_THAT(RemarksOf(imported), testing::Contains(testing::StartsWith(
                                       "control-characters: blanks replace 6 control characters")));
  LeftOut wrapping;
  wrapping.points = std::numeric_limits<std::size_t>::max();
  wrapping.lines = 2;
  ImportRemarks remarks;
  wrapping.AddSummary(remarks);
  EXPECT_EQ(remarks.at(0).count, std::numeric_limits<std::uint64_t>::max());
}

// --- refusals and damage ---

TEST_F(ImporterTest, RefusalsSayWhy) {
  EXPECT_EQ(Refusal((folder_ / "none.obj").string()), "no such file");
  EXPECT_EQ(Refusal(folder_.string()), "is a folder, not a file");
  EXPECT_EQ(Refusal("/dev/null"), "is not a regular file");
  EXPECT_EQ(Refusal(Write("empty.3ds", "")), "the file is empty");
  EXPECT_THAT(Refusal(Write("prose.obj", "Dear reader,\nthis is a letter and no model.\n")),
              HasSubstr("holds nothing"));
  EXPECT_EQ(Refusal(Write("notes.txt", "buy milk\n")), "not a scene file of a known format");
  EXPECT_THAT(
      Refusal(Write("wide.obj", std::string("\xFF\xFE\x76\0 \0\x30\0 \0\x30\0 \0\x30\0\n\0", 18))),
      HasSubstr("UTF-16"));
  EXPECT_THAT(Refusal(Write("old.fbx",
                            "; FBX 6.1.0\nFBXHeaderExtension: {\n  FBXHeaderVersion: 1003\n"
                            "  FBXVersion: 6100\n}\nObjects: {\n}\nConnections: {\n}\n")),
              HasSubstr("save it as FBX 2011 or later"));
  struct Broken {
    const char* name;
    std::string bytes;
    const char* reason;
  };
  const Broken files[] = {
      {"b.gltf", R"({"asset":{}})", "asset.version: is missing"},
      {"a.glb",
       {"glTF\2\0\0\0\x28\0\0\0\x10\0\0\0JSON{\"a\"", 24},
       "header says 40 bytes, it has 24"},
      {"b.glb",
       {"glTF\2\0\0\0\x18\0\0\0\x10\0\0\0JSON{\"a\"", 24},
       "JSON chunk says 16 bytes, 4 are"},
      {"a.dae", "<COLLADA>\n<a></b></COLLADA>", "line 2, column 6: is no sound XML"},
      {"a.3ds", {"MM\x64\0\0\0==\x5E\0\0\0--------", 20}, "first chunk says 94 bytes, 14 are left"},
      {"b.3ds",
       {"MM\x14\0\0\0==\xC8\0\0\0--------", 20},
       "byte 6: the chunk 0x3D3D says 194 bytes"},
      {"a.ase", "*3DSMAX_ASCIIEXPORT 200\n*SCENE {\n", "block *SCENE that begins in line 2"}};
  for (const Broken& file : files) {
    EXPECT_THAT(Refusal(Write(file.name, file.bytes)), HasSubstr(file.reason));
  }
}

/// A mesh of one triangle of the given kind behind a sound one.
aiMesh* MeshWithFace(const std::vector<unsigned>& indices, float lastX) {
  auto* mesh = new aiMesh;
  mesh->mNumVertices = 4;
  mesh->mVertices = new aiVector3D[4]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {lastX, 0, 0}};
  mesh->mNumFaces = 2;
  mesh->mFaces = new aiFace[2];
  const std::vector<unsigned> sound{0, 1, 2};
  for (unsigned f = 0; f < 2; ++f) {
    const std::vector<unsigned>& source = f == 0 ? sound : indices;
    mesh->mFaces[f].mNumIndices = static_cast<unsigned>(source.size());
    mesh->mFaces[f].mIndices = new unsigned[source.size()];
    std::ranges::copy(source, mesh->mFaces[f].mIndices);
  }
  return mesh;
}

TEST(RebuildMeshTest, DamagedMeshesLoseOnlyTheirDamage) {
  aiScene scene;
  scene.mNumMeshes = 4;
  scene.mMeshes = new aiMesh* [4] {
    MeshWithFace({0, 1, 4000000000}, 5),
        MeshWithFace({0, 1, 3}, std::numeric_limits<float>::infinity()),
        MeshWithFace({0, 1, 2, 3}, 5), nullptr
  };
  scene.mMeshes[2]->mMaterialIndex = 77;
  LeftOut leftOut;
  const std::vector<unsigned> meshes{0, 1, 2, 3, 4};
  const RebuiltMesh rebuilt = RebuildMesh(scene, meshes, {0}, {}, leftOut);
  ASSERT_NE(rebuilt.mesh, nullptr);
  EXPECT_EQ(rebuilt.mesh->faces.size(), 3u);
  EXPECT_EQ(rebuilt.mesh->verts.size(), 3u);
  EXPECT_THAT(rebuilt.partMaterials, ElementsAre(0, -1));
  EXPECT_EQ(leftOut.faces, 2u);
  EXPECT_EQ(leftOut.vertices, 1u);
  EXPECT_EQ(leftOut.polygons, 1u);
  EXPECT_EQ(leftOut.meshes, 2u);
}

TEST(FoldHelperNodesTest, DamagedTree) {
  auto scene = std::make_shared<aiScene>();
  scene->mRootNode = new aiNode("RootNode");
  auto* node = new aiNode("A");
  auto* helperWithMesh = new aiNode("B_$AssimpFbx$_Translation");
  node->mTransformation.a4 = std::numeric_limits<float>::quiet_NaN();
  helperWithMesh->mTransformation.a4 = 5;
  helperWithMesh->mNumMeshes = 1;
  helperWithMesh->mMeshes = new unsigned[1]{0};
  node->mNumChildren = 2;
  node->mChildren = new aiNode* [2] { nullptr, helperWithMesh };
  scene->mRootNode->mNumChildren = 1;
  scene->mRootNode->mChildren = new aiNode* [1] { node };

  LibraryScene source;
  source.path = "x.fbx";
  source.scene = scene;
  LeftOut leftOut;
  const std::vector<FoldedNode> folded = FoldHelperNodes(source, leftOut);
  ASSERT_EQ(folded.size(), 2u);
  EXPECT_EQ(folded[0].name, "A");
  EXPECT_EQ(folded[0].world, AffineMatrix{});
  EXPECT_EQ(folded[1].name, "B");
  EXPECT_EQ(folded[1].parent, 0);
  EXPECT_EQ(folded[1].world.rows[0][3], 5);
  EXPECT_EQ(leftOut.transforms, 1u);
}

TEST(HostTextTest, TextsBecomeValid) {
  EXPECT_EQ(ValidUtf8("a\xCE\xB2\xE3\x82\xAB\xF0\x9F\x98\x82"),
            "a\xCE\xB2\xE3\x82\xAB\xF0\x9F\x98\x82");
  EXPECT_EQ(ValidUtf8(std::string_view("ab\0c", 4)), "ab");
  const std::string bad = "\xEF\xBF\xBD";
  EXPECT_EQ(ValidUtf8("M\xFCller"), "M" + bad + "ller");
  EXPECT_EQ(ValidUtf8("\xC0\x80"), bad + bad);            // overlong
  EXPECT_EQ(ValidUtf8("\xED\xA0\x80"), bad + bad + bad);  // surrogate
  EXPECT_EQ(ValidUtf8("x\xE2\x82"), "x" + bad + bad);     // cut
  EXPECT_EQ(ValidUtf8("\xF4\x90\x80\x80"), bad + bad + bad + bad);
  EXPECT_EQ(DecodeEntities("&lt;a&cr;&lf;&amp;lt;&b;&"), "<a\r\n&lt;&b;&");
  EXPECT_EQ(DecodePercents("a%20b%2Fc%zz%2"), "a b/c%zz%2");
  EXPECT_EQ(FirstLine("\n  one\ttwo \r\nthree"), "one two");
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

// --- files of another program ---

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
