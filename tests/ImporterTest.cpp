// Foreign formats: what arrives in the host's scene, from files written here and from real ones.
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

#include "importer/FoldHelperNodes.h"
#include "importer/HostText.h"
#include "importer/ImportScene.h"
#include "importer/LeftOut.h"
#include "importer/ReadWithLibrary.h"
#include "importer/RebuildMesh.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
    return ImportScene(Write(name, text));
  }
  std::string Refusal(const std::string& path) const {
    try {
      ImportScene(path);
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

TEST_F(ImporterTest, ObjMeshIsRebuilt) {
  Write("two.mtl",
        "newmtl Red\nKd 1 0 0\nd 0.5\nmap_Kd .\\red.png\n"
        "newmtl Blue\nKd 0 0 1\nmap_Kd ..\\..\\art\\x\\..\\blue.png\n");
  const ImportedScene imported = Import(
      "two.obj",
      "mtllib two.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 9 9 9\nv nan 0 0\n"
      "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 0\n"
      "o Quad\nusemtl Red\nf 1/1 2/2 3/3\nusemtl Blue\nf 1/4 3/3 4/1\nf 1/1 2/2 6/3\nl 1 2\n");
  ASSERT_EQ(imported.scene.root.name, "Scene Root");
  const SceneNode& quad = Named(imported, "Quad");
  EXPECT_EQ(quad.objectTransform, kYUpAt0);
  const Mesh& mesh = *quad.mesh;
  EXPECT_THAT(mesh.verts,
              ElementsAre(Point3{0, 0, 0}, Point3{1, 0, 0}, Point3{1, 1, 0}, Point3{0, 1, 0}));
  EXPECT_EQ(mesh.tVerts.size(), 3u);  // the fourth equals the first
  ASSERT_EQ(mesh.faces.size(), 2u);
  EXPECT_EQ(mesh.faces[0].MatID(), 0);
  EXPECT_EQ(mesh.faces[1].MatID(), 1);
  EXPECT_THAT(mesh.faces[1].v, ElementsAre(0u, 2u, 3u));

  const std::vector<SceneMaterial>& materials = imported.scene.materials;
  ASSERT_EQ(materials.size(), 3u);
  const SceneMaterial& multi = materials[static_cast<std::size_t>(quad.material)];
  EXPECT_EQ(multi.materialClass, SceneMaterialClass::kMulti);
  EXPECT_THAT(multi.subMaterials, ElementsAre(0, 1));
  EXPECT_EQ(materials[0].name, "Red");
  EXPECT_EQ(materials[0].diffuse, (Color{1, 0, 0}));
  EXPECT_FLOAT_EQ(materials[0].opacity, 0.5f);
  EXPECT_EQ(materials[0].diffuseMap->file, "red.png");
  EXPECT_EQ(materials[1].diffuseMap->file, "art\\blue.png");

  ASSERT_EQ(imported.warnings.size(), 1u);
  EXPECT_THAT(imported.warnings[0], HasSubstr("1 line,"));
  EXPECT_THAT(imported.warnings[0], HasSubstr("1 triangle with such a corner"));
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
  ASSERT_EQ(missing.warnings.size(), 1u);
  EXPECT_THAT(missing.warnings[0], HasSubstr("\"no such.mtl\""));

  const ImportedScene lines = Import("lines.obj", "o Wire\nv 0 0 0\nv 1 0 0\nv 1 1 0\nl 1 2 3\n");
  EXPECT_EQ(Named(lines, "Wire").object, SceneObject::kHelper);
  EXPECT_THAT(lines.warnings, ElementsAre(HasSubstr("no triangle"), HasSubstr("2 lines")));
}

TEST_F(ImporterTest, PlyStandsUprightWithoutMaterial) {
  const ImportedScene imported =
      Import("a.ply",
             "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
             "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
             "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n");
  const SceneNode& node = imported.scene.root.children.at(0);
  EXPECT_EQ(node.objectTransform, Matrix3{});
  EXPECT_EQ(node.material, -1);
  EXPECT_THAT(imported.scene.materials, IsEmpty());
}

// --- smoothing ---

/// A tube of 12 sides along z through rings of these radii at z = 0, 1, ...; smooth within each
/// band, with a crease at every ring, and a flat cap on the last one.
std::string Tube(const std::vector<double>& radii) {
  constexpr int kSides = 12;
  std::ostringstream obj;
  obj << "o Tube\n";
  for (std::size_t ring = 0; ring < radii.size(); ++ring) {
    for (int i = 0; i < kSides; ++i) {
      const double angle = 2 * std::numbers::pi * i / kSides;
      obj << "v " << radii[ring] * std::cos(angle) << ' ' << radii[ring] * std::sin(angle) << ' '
          << ring << '\n';
    }
  }
  for (std::size_t band = 0; band + 1 < radii.size(); ++band) {
    for (int i = 0; i < kSides; ++i) {
      const double angle = 2 * std::numbers::pi * i / kSides;
      obj << "vn " << std::cos(angle) << ' ' << std::sin(angle) << ' '
          << radii[band] - radii[band + 1] << '\n';
    }
  }
  obj << "vn 0 0 1\n";
  for (std::size_t band = 0; band + 1 < radii.size(); ++band) {
    for (int i = 0; i < kSides; ++i) {
      const auto corner = [&](std::size_t ring, int side) {
        obj << ' ' << ring * kSides + static_cast<std::size_t>(side % kSides) + 1 << "//"
            << band * kSides + static_cast<std::size_t>(side % kSides) + 1;
      };
      obj << 'f';
      corner(band, i), corner(band, i + 1), corner(band + 1, i + 1), corner(band + 1, i);
      obj << '\n';
    }
  }
  obj << 'f';
  for (int i = 0; i < kSides; ++i) {
    obj << ' ' << (radii.size() - 1) * kSides + static_cast<std::size_t>(i) + 1 << "//"
        << (radii.size() - 1) * kSides + 1;
  }
  obj << '\n';
  return obj.str();
}

TEST_F(ImporterTest, SmoothingGroupsComeFromNormals) {
  const ImportedScene imported = Import("tube.obj", Tube({1, 2, 1, 2}));
  const Mesh& mesh = *Named(imported, "Tube").mesh;
  ASSERT_EQ(mesh.faces.size(), 3u * 24 + 10);
  EXPECT_EQ(mesh.verts.size(), 4u * 12);
  // Neighbouring bands differ; the first and the third may share a bit; the cap is flat. Never bit
  // 0.
  EXPECT_THAT(GroupsOf(mesh, 0, 24), ElementsAre(2u));
  EXPECT_THAT(GroupsOf(mesh, 24, 48), ElementsAre(4u));
  EXPECT_THAT(GroupsOf(mesh, 48, 72), ElementsAre(2u));
  EXPECT_THAT(GroupsOf(mesh, 72, 82), ElementsAre(0u));
}

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

TEST_F(ImporterTest, GltfNodesMaterialsAndExtras) {
  const ImportedScene imported = Import("room.gltf", Gltf(R"(
{"name":"Static_Room","mesh":0,"translation":[1,2,3],"children":[1,2],
 "extras":{"userProperties":"floorface\nclimbable","notrendered":true,"other":false,"n":3}},
{"name":"Twin","mesh":0,"rotation":[0.70710678,0,0,0.70710678]},{"name":"Bare","mesh":1})"));
  ASSERT_EQ(imported.scene.root.children.size(), 1u);  // the file's root, with its mesh, below ours
  const SceneNode& room = imported.scene.root.children[0];
  EXPECT_EQ(room.name, "Static_Room");
  EXPECT_EQ(room.objectTransform, Rows({100, 0, 0}, {0, 0, 100}, {0, -100, 0}, {100, -300, 200}));
  EXPECT_EQ(room.userProperties, "floorface\nclimbable\r\nnotrendered\r\n");
  const SceneNode& twin = Named(imported, "Twin");
  EXPECT_EQ(twin.mesh, room.mesh);
  EXPECT_EQ(twin.material, room.material);
  // Turned about x by 90 degrees: y-up to z-up and back, without a residue.
  EXPECT_EQ(twin.objectTransform, Rows({100, 0, 0}, {0, -100, 0}, {0, 0, -100}, {100, -300, 200}));
  EXPECT_EQ(Named(imported, "Bare").material, -1);

  ASSERT_EQ(imported.scene.materials.size(), 1u);
  const SceneMaterial& brick = imported.scene.materials[0];
  EXPECT_EQ(brick.name, "Brick");
  EXPECT_TRUE(brick.twoSided);
  EXPECT_EQ(brick.diffuse, (Color{0.25f, 0.5f, 0.75f}));
  EXPECT_EQ(brick.diffuseMap->file,
            "sub dir/br\xC3\xBC"
            "ck.png");
  // offset + rotation * scale on (u, v down), as the extension defines it, for the v-up point (0.3,
  // 0.6).
  const double u = 2 * 0.3;
  const double v = 3 * (1 - 0.6);
  const Point3 moved = Point3{0.3f, 0.6f, 0} * brick.diffuseMap->uvTransform.value();
  EXPECT_NEAR(moved.x, 0.1 + std::cos(0.5) * u + std::sin(0.5) * v, 1e-5);
  EXPECT_NEAR(moved.y, 1 - (0.2 - std::sin(0.5) * u + std::cos(0.5) * v), 1e-5);
  EXPECT_THAT(imported.warnings, ElementsAre(HasSubstr("multiplied by 100")));
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

TEST_F(ImporterTest, FbxPivotsTextsAndUvRotation) {
  const ImportedScene imported = Import("pivot.fbx", kFbx);
  ASSERT_EQ(NodesOf(imported).size(), 2u);
  const SceneNode& node = imported.scene.root.children.at(0);
  EXPECT_EQ(node.name, "Say \"hi\"");
  EXPECT_EQ(node.userProperties, "floorface\r\nclimbable\r\n");
  EXPECT_EQ(node.objectTransform, Rows({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {100, 0, 0}));
  // The offset is the geometry's alone.
  EXPECT_EQ(node.children.at(0).objectTransform, Rows({1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {7, 8, 9}));
  const SceneTexture& map = imported.scene.materials.at(0).diffuseMap.value();
  EXPECT_EQ(map.file, "Art\\slate.tga");
  const Point3 corner = Point3{1, 0.5f, 0} * map.uvTransform.value();  // a quarter turn: degrees
  EXPECT_NEAR(corner.x, 0.5, 1e-6);
  EXPECT_NEAR(corner.y, 1.5, 1e-6);
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
  std::string extras = Gltf(R"({"name":"Floor","extras":5})");
  EXPECT_THAT(Refusal(Write("extras.gltf", extras)), HasSubstr("extras"));
  extras.replace(extras.find("data:"), 5, "gone:");
  EXPECT_NE(Refusal(Write("gone.gltf", extras)), "not refused");
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
  const RebuiltMesh rebuilt = RebuildMesh(scene, meshes, {0}, leftOut);
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

// --- real files ---

class RealFileTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(Folder())) GTEST_SKIP() << "no real scenes here";
  }
  static fs::path Folder() { return fs::path(MAPEXPORT_SOURCE_DIR) / "../shared/scenes"; }
  static ImportedScene Import(const std::string& name) {
    return ImportScene((Folder() / name).string());
  }
};

TEST_F(RealFileTest, Spider) {
  const ImportedScene spider = Import("spider.obj");
  EXPECT_EQ(spider.scene.root.children.size(), 19u);
  EXPECT_EQ(TrianglesOf(spider), 1368u);
  ASSERT_EQ(spider.scene.materials.size(), 5u);
  EXPECT_EQ(spider.scene.materials[3].name, "BeinTex");
  EXPECT_EQ(spider.scene.materials[3].diffuseMap->file, "drkwood2.jpg");
  EXPECT_EQ(Named(spider, "Bein1Li").material, 3);
  EXPECT_THAT(spider.warnings, IsEmpty());
}

TEST_F(RealFileTest, AseAnd3dsKeepTheirOwnNumbers) {
  const ImportedScene cubes = Import("ThreeCubesGreen.ASE");
  ASSERT_EQ(cubes.scene.root.children.size(), 3u);
  const SceneNode& cube = cubes.scene.root.children[2];
  EXPECT_EQ(cube.name, "Quader03");
  EXPECT_EQ(cube.objectTransform,
            Rows({0, -1, 0}, {0, 0, 1}, {-1, 0, 0}, {0, 91.4127f, 176.7313f}));
  EXPECT_EQ(cube.mesh->verts.size(), 8u);
  EXPECT_THAT(GroupsOf(*cube.mesh, 0, 12), ElementsAre(0u));
  EXPECT_EQ(cubes.scene.materials.at(0).diffuse, (Color{0.6510f, 0.2902f, 0}));

  const ImportedScene boxes = Import("test1.3ds");
  EXPECT_EQ(boxes.scene.root.children.size(), 9u);
  EXPECT_EQ(TrianglesOf(boxes), 108u);
  EXPECT_EQ(boxes.scene.materials.at(1).diffuseMap->file, "CWALL02.JPG");
}

TEST_F(RealFileTest, GltfWithSideFile) {
  const ImportedScene box = Import("BoxTextured-glTF/BoxTextured.gltf");
  const SceneNode& node = Named(box, "nodes[1]");
  // The file turns z up into y up; the importer turns it back.
  EXPECT_EQ(node.objectTransform, Rows({100, 0, 0}, {0, 100, 0}, {0, 0, 100}, {0, 0, 0}));
  EXPECT_EQ(node.mesh->verts.size(), 8u);
  EXPECT_EQ(node.mesh->faces.size(), 12u);
}

TEST_F(RealFileTest, UserTextInAsciiAndBinaryFbx) {
  for (const char* name : {"max-fbx/udp_instanced_material_7700_ascii.fbx",
                           "max-fbx/udp_instanced_material_7700_binary.fbx"}) {
    const ImportedScene imported = Import(name);
    const std::vector<const SceneNode*> nodes = NodesOf(imported);
    ASSERT_EQ(nodes.size(), 3u) << name;
    for (const SceneNode* node : nodes) {
      EXPECT_EQ(node->userProperties, "floorface\r\nclimbable\r\n");
      EXPECT_EQ(node->mesh, nodes[0]->mesh);
    }
    EXPECT_EQ(nodes[0]->objectTransform.rows[3], (Point3{0, 20, 0}));
    EXPECT_THAT(imported.warnings, ElementsAre(HasSubstr("share a mesh")));
  }
  const ImportedScene quotes = Import("max-fbx/udp_notrendered_7500_binary.fbx");
  EXPECT_EQ(Named(quotes, "&quot;").userProperties, "notrendered\r\n");  // binary: no entities
  EXPECT_EQ(Named(quotes, "\"'&\"").objectTransform.rows[3], (Point3{-20, 20, 0}));
}

TEST_F(RealFileTest, FbxOffsetsAndNames) {
  const ImportedScene types = Import("max-fbx/max_geometry_transform_types_7700_ascii.fbx");
  EXPECT_EQ(types.scene.root.children.size(), 4u);
  EXPECT_EQ(Named(types, "Plane001").objectTransform,
            Rows({0, -1, 0}, {1, 0, 0}, {0, 0, 0.5f}, {10, 0, 7.4505806e-09f}));
  EXPECT_EQ(Named(types, "Line001").object, SceneObject::kHelper);

  // Each of four nested boxes stands 40 from the middle, a quarter turn on, whatever its ancestors'
  // own offsets are.
  const ImportedScene nested = Import("max-fbx/max_geometry_transform_instances_7700_binary.fbx");
  constexpr std::array<std::pair<const char*, Point3>, 4> kPlaces{{{"Box001", {40, 0, 0}},
                                                                   {"Box002", {0, 40, 0}},
                                                                   {"Box003", {-40, 0, 0}},
                                                                   {"Box004", {0, -40, 0}}}};
  for (const auto& [name, place] : kPlaces) {
    const Point3 off = Named(nested, name).objectTransform.rows[3] - place;
    EXPECT_LT(Length(off), 2e-5f) << name;
  }
  EXPECT_EQ(Import("max-fbx/max_unicode_7500_binary.fbx").scene.root.children.at(0).name,
            "a\xCE\xB2\xE3\x82\xAB\xF0\x9F\x98\x82");
}

}  // namespace
}  // namespace mapexport
