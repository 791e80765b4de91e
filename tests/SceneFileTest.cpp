// Scene files in and out, and the host interfaces over what was read.

#include "fuzz/FuzzScene.h"
#include "scene/HostScene.h"
#include "scene/IdleKeywords.h"
#include "scene/KeywordFile.h"
#include "support/SceneTexts.h"
#include "system/ShellPattern.h"

namespace mapexport {
namespace {

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t Below(std::size_t end) {
    return static_cast<std::uint32_t>(engine_()) % static_cast<std::uint32_t>(end);
  }

 private:
  std::mt19937 engine_;
};

/// Of the same bytes: 0 is not -0.
template <class T>
bool SameBytes(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

bool Same(const SceneNode& a, const SceneNode& b) {
  if ((a.mesh == nullptr) != (b.mesh == nullptr)) return false;
  const auto plain = [](const SceneNode& n) {
    return std::tie(n.name, n.objectTransform, n.wireColor, n.userProperties, n.material, n.object);
  };
  return plain(a) == plain(b) && std::ranges::equal(a.children, b.children, Same) &&
         (!a.mesh ||
          (SameBytes(a.mesh->verts, b.mesh->verts) && SameBytes(a.mesh->faces, b.mesh->faces) &&
           SameBytes(a.mesh->tVerts, b.mesh->tVerts) && SameBytes(a.mesh->tvFace, b.mesh->tvFace)));
}

bool Same(const Scene& a, const Scene& b) {
  return a.materials == b.materials && Same(a.root, b.root);
}

// Everything that the format describes, in the order that makes reading hardest.
const char kBackwards[] = R"({
  "root": {
    "later": {"faces": [[9]], "root": null, "a": [true, false, "\ud800", -1.5e+3]},
    "children": [
      {"children": [], "material": 1, "mesh": {
        "textureFaces": [[2, 1, 0], [0, 0, 0]], "textureVertices": [[0, 0, 0], [1, 0, 0], [0, 1, 0]],
        "faces": [[0, 1, 2, 4294967295, 65535], [2, 1, 0]], "vertices": [[0, 0, -0], [1.5, 0, 0], [0, 1e1, 0]]},
       "userProperties": "floorface\r\nclimbable", "wireColor": [255, 128, 0],
       "objectTransform": [[1, 0, 0], [0, 2, 0], [0, 0, 3], [4, 5, 6]], "n\u0061me": "B\u00f6den \ud83d\ude00"},
      {"object": "helper", "name": "Dummy", "mesh": {"vertices": [[1, 2, 3]]}},
      {"object": "mesh", "mesh": null}, {"material": null, "wireColor": null, "mesh": {}}],
    "name": "Root"},
  "materials": [
    {"subMaterials": [1, null, 0], "class": "multi"},
    {"diffuseMap": {"uvTransform": [[2, 0, 0], [0, 2, 0], [0, 0, 1], [0, 0, 0]], "file": "D:\\a.bmp", "class": "other"},
     "twoSided": true, "shading": -2147483648, "shininessStrength": 0.05, "shininess": 0.25, "opacity": 0.5,
     "specular": [0.7, 0.8, 0.9], "diffuse": [0.4, 0.5, 0.6], "ambient": [0.1, 0.2, 0.3], "name": "Wall"},
    {"class": null, "diffuseMap": {}}],
  "version": 1, "format": "mapexport-scene", "version2": 1})";

TEST(ReadSceneFile, TakesMembersInAnyOrder) {
  const Scene scene = Read(kBackwards);
  EXPECT_TRUE(Same(scene, Read(Write(scene)))) << "in the usual order";
  ASSERT_EQ(scene.materials.size(), 3u);
  EXPECT_EQ(scene.materials[0].subMaterials, (std::vector<int>{1, -1, 0}));
  EXPECT_EQ(scene.materials[1].shading, std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(scene.materials[1].diffuseMap->uvTransform->rows[1], (Point3{0, 2, 0}));
  EXPECT_TRUE(scene.materials[2].diffuseMap->isBitmap);
  ASSERT_EQ(scene.root.children.size(), 4u);
  const SceneNode& floor = scene.root.children[0];
  EXPECT_EQ(floor.name, "B\u00f6den \U0001f600");
  EXPECT_EQ(floor.material, 1);
  EXPECT_EQ(floor.mesh->faces[0], (Face{{0, 1, 2}, 0xFFFFFFFF, 0xFFFF0000}));
  EXPECT_EQ(floor.mesh->tvFace[0], (TVFace{{2, 1, 0}}));
  EXPECT_EQ(scene.root.children[1].object, SceneObject::kHelper);
  EXPECT_EQ(scene.root.children[1].mesh, nullptr);
  EXPECT_NE(scene.root.children[3].mesh, nullptr);
}

TEST(ReadSceneFile, RoundsNumbersToTheNearestFloat) {
  const std::string tiny = "0." + Repeat("0", 400) + "1";
  const struct {
    const char* text;
    float number;
  } cases[] = {{"-0", -0.0f},
               {"-0.0", -0.0f},
               {"1E+2", 100.0f},
               {"0.1", 0.1f},
               {"16777217", 16777216.0f},
               {"3.4028235e38", std::numeric_limits<float>::max()},
               {"3.4028235677973362e38", std::numeric_limits<float>::max()},
               {"1e-45", std::numeric_limits<float>::denorm_min()},
               {"-1e-400", -0.0f},
               {"1e+00000000000000000000001", 10.0f},
               {"-1e-99999999999999999999999", -0.0f},
               {tiny.c_str(), 0.0f},
               {"0.30000000000000000000000000000000000000000000000001", 0.3f}};
  for (const auto& [text, number] : cases) {
    const Scene scene = Read(Material(R"("opacity": )" + std::string(text)));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(scene.materials[0].opacity),
              std::bit_cast<std::uint32_t>(number))
        << text;
  }
}

// The lists of meshes are parsed ahead of all else, but for those whose names are written with an
// escape: the two ways must tell the same of any list.
TEST(ReadSceneFile, ReadsTheListsOfMeshesTheSameOnBothWays) {
  const struct {
    const char* plain;
    const char* escaped;
  } names[] = {{R"("vertices"     :)", R"("vert\u0069ces":)"},
               {R"("faces"     :)", R"("f\u0061ces":)"},
               {R"("textureVertices"     :)", R"("textureVert\u0069ces":)"},
               {R"("textureFaces"     :)", R"("textureF\u0061ces":)"},
               {R"("cornerNormals"     :)", R"("cornerNorm\u0061ls":)"}};
  const std::string usual[] = {"0", "1", "2"};
  std::vector<std::string> unusual{"", "\t0\r\n", "0 0", "\xFF"};
  std::istringstream words(
      "-0 -0.0 0.1 -7.038531e-26 1E+2 1e-45 1e-400 3.4028235677973362e38 3.4028235677973366e38 "
      "1e39 "
      "9007199254740993 0.30000000000000000001 12345678.9012345678 65535 65536 4294967295 "
      "4294967296 "
      "18446744073709551617 -1 01 1. .5 1e 1e+ +1 1x null \"1\" [1] [] true 0] [0 0,");
  for (std::string word; words >> word;) unusual.push_back(word);
  Random random(21);
  int sound = 0;
  for (int i = 0; i < 2000; ++i) {
    const auto tuple = [&](unsigned size) {
      if (random.Below(60) == 0) size = random.Below(7);
      std::string text = "[";
      for (unsigned k = 0; k < size; ++k) {
        text += k == 0 ? "" : random.Below(4) == 0 ? "\n , " : ",";
        text += random.Below(40) == 0 ? unusual[random.Below(unusual.size())] : usual[k % 3];
      }
      return text + "]";
    };
    std::string plain;
    for (std::size_t list = 0; list < std::size(names); ++list) {
      plain += std::string(list == 0 ? "" : ", ") + names[list].plain + "\n[";
      const int entries = list == 4 && random.Below(20) != 0 ? 9 : 3;
      for (int k = 0; k < entries; ++k)
        plain += (k == 0 ? "" : ", ") + tuple(list == 1 ? 3 + random.Below(3) : 3);
      plain += "]";
    }
    std::string escaped = plain;
    for (const auto& name : names) {
      escaped.replace(escaped.find(name.plain), std::strlen(name.plain), name.escaped);
    }
    const std::string defect = DefectOf(OfMesh(plain));
    ASSERT_EQ(defect, DefectOf(OfMesh(escaped))) << plain;
    if (!defect.empty()) continue;
    ++sound;
    ASSERT_TRUE(Same(Read(OfMesh(plain)), Read(OfMesh(escaped)))) << plain;
  }
  EXPECT_GT(sound, 200);
  EXPECT_LT(sound, 1800);
}

/// Names that a JSON text must escape, or need not.
void NameNodes(SceneNode& node, Random& random) {
  const std::string pieces =
      "a|\"|\\|/|\n\r\t\b\f|\x01\x1F\x7F|\u00e9|\u20ac|\U0001f600|\uffff|"
      "\xC2\x9B\xD8\x9C|\u2029|\u202e\u2066|\u200b\ufeff|\U000e0001";
  for (std::string* text : {&node.name, &node.userProperties}) {
    text->clear();
    std::istringstream some(pieces);
    for (std::string piece; std::getline(some, piece, '|');) {
      if (random.Below(4) == 0) *text += piece;
    }
  }
  for (SceneNode& child : node.children) NameNodes(child, random);
}

TEST(WriteSceneFile, GivesTheSameSceneBack) {
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    Random random(seed);
    std::vector<std::uint8_t> bytes(3000);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random.Below(256));
    FuzzBytes in(bytes.data(), bytes.size());
    Scene scene = FuzzScene(in).Make();
    NameNodes(scene.root, random);
    const std::string text = Write(scene);
    const Scene read = Read(text);
    EXPECT_TRUE(Same(read, scene)) << "seed " << seed << "\n" << text;
    std::ostringstream binary;
    WriteBinaryScene(scene, binary);
    const ScratchFile file(binary.str());
    EXPECT_TRUE(Same(ReadBinaryScene(OpenToRead(file.Path()), "a"), scene)) << "seed " << seed;
  }
}

TEST(WriteSceneFile, StaysSmallWhenScenesAreDeep) {
  const Scene scene = Read(Nested(kMaxSceneDepth));
  const std::string text = Write(scene);
  EXPECT_LT(text.size(), kMaxSceneDepth * 250u);
  EXPECT_TRUE(Same(Read(text), scene));
}

TEST(HostScene, ShowsMaterialsThatReferToLaterOnesAndThemselves) {
  const Scene scene = Read(Document(R"("materials": [
      {"class": "multi", "subMaterials": [2, null, 0]},
      {"class": "other", "subMaterials": [0]},
      {"name": "late", "diffuseMap": {"file": "a.bmp"}}],
      "root": {"material": 0, "children": [{"material": 1}]})"));
  const HostScene host(scene);
  Mtl* multi = host.GetRootNode()->GetMtl();
  EXPECT_EQ(multi->ClassID(), kMultiMtlClassID);
  ASSERT_EQ(multi->NumSubMtls(), 3);
  EXPECT_STREQ(multi->GetSubMtl(0)->GetName(), "late");
  EXPECT_EQ(multi->GetSubMtl(1), nullptr);
  EXPECT_EQ(multi->GetSubMtl(2), multi);
  auto* map = dynamic_cast<StdMat*>(multi->GetSubMtl(0))->GetSubTexmap(1);
  ASSERT_EQ(map->ClassID(), kBitmapTexClassID);
  EXPECT_STREQ(dynamic_cast<BitmapTex*>(map)->GetMapName(), "a.bmp");
  Mtl* other = host.GetRootNode()->GetChildNode(0)->GetMtl();
  EXPECT_NE(other->ClassID(), kStandardMtlClassID);
  EXPECT_NE(other->ClassID(), kMultiMtlClassID);
  EXPECT_EQ(other->NumSubMtls(), 0);
}

TEST(IsSceneFile, GoesByTheEndOfTheName) {
  for (const char* path : {"a.scene.json", "b/A.SCENE.Json", ".scene.json", "a.scene.BIN"}) {
    EXPECT_TRUE(IsSceneFile(path)) << path;
  }
  for (const char* path : {"a.json", "scene.json", "a.scene.json ", "a.scene.jso", ""}) {
    EXPECT_FALSE(IsSceneFile(path)) << path;
  }
}

TEST(ShellPatternTest, MeansWhatShellsMean) {
  for (const auto& [pattern, fitting, others] :
       {std::tuple<const char*, std::vector<const char*>, std::vector<const char*>>{
            "Floor*", {"Floor", "Floor.001"}, {"floor", "aFloor", ""}},
        {"*a*b*ab", {"aabab", "xaxbxab"}, {"aab", "abba"}},
        {"?[a-c]",
         {"\u00e4b",
          "\xFF"
          "a"},
         {"b", "ad", "abc"}},
        {"[!]x-][]]", {"y]"}, {"x]", "-]", "]]"}},
        {"\\*[\\]a]\\", {"*]\\", "*a\\"}, {"x]\\"}},
        {"[a", {"[a"}, {"a"}},
        {"", {""}, {"a"}},
        {"**", {"", "a"}, {}}}) {
    for (const char* text : fitting) EXPECT_TRUE(MatchesPattern(text, pattern)) << pattern << text;
    for (const char* text : others) EXPECT_FALSE(MatchesPattern(text, pattern)) << pattern << text;
  }
  // Not exponential.
  const std::string text(5000, 'a');
  EXPECT_FALSE(MatchesPattern(text, "*a*a*a*a*a*a*a*a*a*a*b"));
}

TEST(KeywordFileTest, GivesNodesWithAMeshTheirKeywords) {
  const ScratchFile file(
      "\xEF\xBB\xBF# floors\r\n\r\n Floor* :FloorFace, climbable\r\n"
      "Level:Wall: notrendered\nGroup: climbable\nnone: climbable");
  const std::vector<KeywordRule> rules = ReadKeywordFile(ScratchFile::Path());
  Scene scene;
  SceneNode& group = scene.root.children.emplace_back();
  group.name = "Group";
  const auto add = [&group](const char* name, const char* text) {
    SceneNode node;
    node.name = name;
    node.userProperties = text;
    node.object = SceneObject::kMesh;
    group.children.push_back(node);
  };
  add("Floor.1", "");
  add("Floor", "a\tclimbable");
  add("Level:Wall", "notrendered\n");
  add("Wall", "");
  const Remarks remarks = SetKeywords(rules, scene);
  EXPECT_EQ(group.userProperties, "");
  EXPECT_EQ(group.children[0].userProperties, "floorface\r\nclimbable\r\n");
  EXPECT_EQ(group.children[1].userProperties, "a\tclimbable\r\nfloorface\r\n");
  EXPECT_EQ(group.children[2].userProperties, "notrendered\n");
  EXPECT_EQ(group.children[3].userProperties, "");
  ASSERT_EQ(remarks.size(), 2u);
  EXPECT_EQ(remarks[0].text, "line 5: no node with a mesh is named like \"Group\"");
  EXPECT_EQ(remarks[1].text, "line 6: no node is named like \"none\"");
}

TEST(KeywordFileTest, RefusesBadLinesByTheirNumber) {
  for (const auto& [line, reason] :
       {std::pair{"Floor climbable", "\"Floor climbable\" is no \"PATTERN: keyword, keyword\""},
        {": climbable", "there is no pattern before the \":\""},
        {"Floor:", "a keyword is missing"},
        {"Floor: climbable,", "a keyword is missing"},
        {"Floor: climable", "\"climable\" is no keyword; \"climbable\" is one"},
        {"Floor: a\x1b", "\"a\\u001B\" is no keyword"}}) {
    const ScratchFile file(std::string("a*: climbable\n") + line + "\n");
    try {
      ReadKeywordFile(ScratchFile::Path());
      ADD_FAILURE() << line;
    } catch (const SceneError& error) {
      EXPECT_EQ(error.what(), ScratchFile::Path() + ": line 2: " + reason);
    }
  }
}

TEST(IdleKeywordsTest, AreThoseThatTheExporterMakesNothingOf) {
  const std::string mesh = R"("mesh":{"vertices":[[0,0,0],[1,0,0],[0,1,0]],"faces":[[0,1,2]]},)"
                           R"("userProperties":"climbable")";
  const Scene scene = Read(
      R"({"format":"mapexport-scene","version":1,"root":{"userProperties":"floorface","children":[)"
      R"({"name":"good",)" +
      mesh + R"(},{"name":"excluded",)" + mesh +
      R"(},{"name":"Static a","children":[{"name":"in",)" + mesh + R"(},{"name":"static b",)" +
      mesh + R"(},{"name":"behind",)" + mesh + R"(}]},{"name":"after",)" + mesh +
      R"(},{"name":"Bare","userProperties":"climbable"}]}})");
  const Remarks remarks = FindIdleKeywords(scene);
  ASSERT_EQ(remarks.size(), 3u);
  EXPECT_THAT(remarks[0].nodes, testing::ElementsAre("Bare"));
  EXPECT_THAT(remarks[1].text, testing::HasSubstr("\"floorface\""));
  EXPECT_THAT(remarks[2].nodes, testing::ElementsAre("in", "static b"));
  EXPECT_THAT(remarks[2].text,
              testing::StartsWith("\"climbable\" in the user properties of node "
                                  "\"in\" and 1 more does nothing: the node is within"));
}

}  // namespace
}  // namespace mapexport
