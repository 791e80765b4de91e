// Foreign formats: what is refused and why, and what damaged scenes of the library lose.
#include <assimp/scene.h>

#include "importer/LeftOut.h"
#include "importer/ReadWithLibrary.h"
#include "importer/fbx/FbxLinks.h"
#include "importer/rebuild/ImportMaterials.h"
#include "importer/rebuild/RebuildMesh.h"
#include "importer/text/HostText.h"
#include "support/ImportedScenes.h"

namespace mapexport {
namespace {

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
      {"a.blend", "BLENDER-v300REND", "is newer than this reader knows; export FBX or glTF"},
      {"b.blend", "BLENDER17-01v0500REND", "is newer than this reader knows"},
      {"c.blend", "\x28\xB5\x2F\xFD compressed", "is newer than this reader knows"},
      {"a.ase", "*3DSMAX_ASCIIEXPORT 200\n*SCENE {\n", "block *SCENE that begins in line 2"}};
  for (const Broken& file : files) {
    EXPECT_THAT(Refusal(Write(file.name, file.bytes)), HasSubstr(file.reason));
  }
}

TEST(FbxLinksTest, DamagedTextsAreRefusedOrRead) {
  const std::string ascii = Fbx();
  const std::optional<FbxLinks> whole = ReadFbxLinks(ascii);
  ASSERT_TRUE(whole);
  EXPECT_EQ(whole->objects.size(), 7u);
  EXPECT_EQ(whole->links.size(), 9u);
  EXPECT_EQ(ascii.substr(whole->links.back().typeAt, 9), "OO\", 1006");
  EXPECT_FALSE(ReadFbxLinks(ascii.substr(0, ascii.size() - 3)));

  const std::string bytes = Content(MAPEXPORT_SOURCE_DIR "/tests/blender/level.fbx");
  ASSERT_TRUE(ReadFbxLinks(bytes));
  for (std::size_t i = 0; i < bytes.size(); i += 211) {
    ReadFbxLinks(std::string(bytes, 0, i));  // no reading beyond the end
    std::string changed = bytes;
    changed.replace(i, 4, "\xFF\xFF\xFF\xFF");
    ReadFbxLinks(changed);
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
  const RebuiltMesh rebuilt = RebuildMesh(scene, meshes, {0}, {}, {}, leftOut);
  ASSERT_NE(rebuilt.mesh, nullptr);
  EXPECT_EQ(rebuilt.mesh->faces.size(), 3u);
  EXPECT_EQ(rebuilt.mesh->verts.size(), 3u);
  EXPECT_THAT(rebuilt.partMaterials, ElementsAre(0, -1));
  EXPECT_EQ(leftOut.faces, 2u);
  EXPECT_EQ(leftOut.vertices, 1u);
  EXPECT_EQ(leftOut.polygons, 1u);
  EXPECT_EQ(leftOut.meshes, 2u);
}

TEST(ImportMaterialsTest, OfPropertiesOfOtherTypesOneNumberIsTaken) {
  const std::array<float, 4> list{0.25f, 0.5f, 0.75f, 1.0f};
  const double number = 1e300;
  auto scene = std::make_shared<aiScene>();
  scene->mNumMaterials = 1;
  scene->mMaterials = new aiMaterial* [1] { new aiMaterial };
  aiMaterial& material = *scene->mMaterials[0];
  material.AddProperty(list.data(), 4, AI_MATKEY_OPACITY);
  material.AddProperty(list.data(), 4, AI_MATKEY_SHADING_MODEL);
  material.AddProperty(&number, 1, AI_MATKEY_TWOSIDED);
  LibraryScene source;
  source.scene = scene;
  const ImportedMaterials imported = ImportMaterials(source);
  ASSERT_EQ(imported.materials.size(), 1u);
  EXPECT_EQ(imported.materials[0].opacity, 0.25f);
  EXPECT_EQ(imported.materials[0].shading, 0);
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

}  // namespace
}  // namespace mapexport
