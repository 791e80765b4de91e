// Scene files in and out, and the host interfaces over what was read.
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>

#include <gmock/gmock.h>
#include <unistd.h>

#include "scene/HostScene.h"
#include "scene/JsonSyntax.h"
#include "scene/JsonValue.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"

namespace mapexport {
namespace {

using testing::HasSubstr;

class ScratchFile {
 public:
  explicit ScratchFile(const std::string& text) {
    std::ofstream(path_, std::ios::binary).write(text.data(), std::ssize(text));
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { std::filesystem::remove(path_); }
  const std::string& Path() const { return path_; }

 private:
  std::string path_ = testing::TempDir() + "mapexport-" + std::to_string(getpid()) + ".scene.json";
};

Scene Read(const std::string& text) {
  return ReadSceneFile(ScratchFile(text).Path());
}

// The message without the file's name, which must be in front; empty when the text can be read.
std::string DefectOf(const std::string& text, std::uint64_t mostItems = UINT64_MAX) {
  const ScratchFile file(text);
  try {
    ReadSceneFile(file.Path(), mostItems);
  } catch (const SceneError& error) {
    const std::string message = error.what();
    EXPECT_TRUE(message.starts_with(file.Path() + ": ")) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    return message.substr(file.Path().size() + 2);
  }
  return "";
}

std::string Write(const Scene& scene) {
  std::ostringstream out;
  WriteSceneFile(scene, out);
  return out.str();
}

// Documents with something in one place and nothing else.
std::string Document(const std::string& members) {
  return R"({"format": "mapexport-scene", "version": 1, )" + members + "}";
}
std::string Root(const std::string& members) {
  return Document(R"("root": {)" + members + "}");
}
std::string OfMesh(const std::string& members) {
  return Root(R"("mesh": {)" + members + "}");
}
std::string Material(const std::string& members) {
  return Document(R"("root": {}, "materials": [{)" + members + "}]");
}
std::string Repeat(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}
std::string Nested(int levels) {
  return Root(Repeat(R"("children": [{)", levels - 1) + Repeat("}]", levels - 1));
}

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t Bits() { return static_cast<std::uint32_t>(engine_()); }
  std::uint32_t Below(std::size_t end) { return Bits() % static_cast<std::uint32_t>(end); }

 private:
  std::mt19937 engine_;
};

template <class T>
bool SameBytes(const T& a, const T& b) {
  using Words = std::array<std::uint32_t, sizeof(T) / sizeof(std::uint32_t)>;
  return std::bit_cast<Words>(a) == std::bit_cast<Words>(b);
}
template <class T>
bool SameBytes(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

bool Same(const SceneNode& a, const SceneNode& b);

bool Same(const std::shared_ptr<const Mesh>& a, const std::shared_ptr<const Mesh>& b) {
  if (a == nullptr || b == nullptr) return a == b;
  return SameBytes(a->verts, b->verts) && SameBytes(a->faces, b->faces) &&
         SameBytes(a->tVerts, b->tVerts) && SameBytes(a->tvFace, b->tvFace);
}

bool Same(const std::optional<Matrix3>& a, const std::optional<Matrix3>& b) {
  return a.has_value() == b.has_value() && (!a || SameBytes(*a, *b));
}

bool Same(const SceneMaterial& a, const SceneMaterial& b) {
  if (a.diffuseMap.has_value() != b.diffuseMap.has_value()) return false;
  if (a.diffuseMap && (a.diffuseMap->isBitmap != b.diffuseMap->isBitmap ||
                       a.diffuseMap->file != b.diffuseMap->file ||
                       !Same(a.diffuseMap->uvTransform, b.diffuseMap->uvTransform))) {
    return false;
  }
  return a.materialClass == b.materialClass && a.name == b.name &&
         SameBytes(a.ambient, b.ambient) && SameBytes(a.diffuse, b.diffuse) &&
         SameBytes(a.specular, b.specular) && SameBytes(a.opacity, b.opacity) &&
         SameBytes(a.shininess, b.shininess) &&
         SameBytes(a.shininessStrength, b.shininessStrength) && a.shading == b.shading &&
         a.twoSided == b.twoSided && a.subMaterials == b.subMaterials;
}

template <class T>
bool Same(const std::vector<T>& a, const std::vector<T>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const T& x, const T& y) { return Same(x, y); });
}

bool Same(const SceneNode& a, const SceneNode& b) {
  return a.name == b.name && SameBytes(a.objectTransform, b.objectTransform) &&
         a.wireColor == b.wireColor && a.userProperties == b.userProperties &&
         a.material == b.material && a.object == b.object && Same(a.mesh, b.mesh) &&
         Same(a.children, b.children);
}

bool Same(const Scene& a, const Scene& b) {
  return Same(a.materials, b.materials) && Same(a.root, b.root);
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

  ASSERT_EQ(scene.materials.size(), 3u);
  EXPECT_EQ(scene.materials[0].materialClass, SceneMaterialClass::kMulti);
  EXPECT_EQ(scene.materials[0].subMaterials, (std::vector<int>{1, -1, 0}));
  const SceneMaterial& wall = scene.materials[1];
  EXPECT_EQ(wall.materialClass, SceneMaterialClass::kStandard);
  EXPECT_EQ(wall.name, "Wall");
  EXPECT_EQ(wall.ambient, (Color{0.1f, 0.2f, 0.3f}));
  EXPECT_EQ(wall.diffuse, (Color{0.4f, 0.5f, 0.6f}));
  EXPECT_EQ(wall.specular, (Color{0.7f, 0.8f, 0.9f}));
  EXPECT_EQ(wall.opacity, 0.5f);
  EXPECT_EQ(wall.shininess, 0.25f);
  EXPECT_EQ(wall.shininessStrength, 0.05f);
  EXPECT_EQ(wall.shading, std::numeric_limits<std::int32_t>::min());
  EXPECT_TRUE(wall.twoSided);
  EXPECT_FALSE(wall.diffuseMap->isBitmap);
  EXPECT_EQ(wall.diffuseMap->file, "D:\\a.bmp");
  EXPECT_EQ(wall.diffuseMap->uvTransform->rows[1], (Point3{0, 2, 0}));
  EXPECT_TRUE(scene.materials[2].diffuseMap->isBitmap);
  EXPECT_FALSE(scene.materials[2].diffuseMap->uvTransform);

  EXPECT_EQ(scene.root.name, "Root");
  EXPECT_EQ(scene.root.object, SceneObject::kNone);
  ASSERT_EQ(scene.root.children.size(), 4u);
  const SceneNode& floor = scene.root.children[0];
  EXPECT_EQ(floor.name, "B\u00f6den \U0001f600");
  EXPECT_EQ(floor.objectTransform.rows[3], (Point3{4, 5, 6}));
  EXPECT_EQ(floor.wireColor, (std::array<std::uint8_t, 3>{255, 128, 0}));
  EXPECT_EQ(floor.userProperties, "floorface\r\nclimbable");
  EXPECT_EQ(floor.material, 1);
  EXPECT_EQ(floor.object, SceneObject::kMesh);
  EXPECT_EQ(floor.mesh->verts[2], (Point3{0, 10, 0}));
  EXPECT_EQ(floor.mesh->faces[0], (Face{{0, 1, 2}, 0xFFFFFFFF, 0xFFFF0000}));
  EXPECT_EQ(floor.mesh->faces[1], (Face{{2, 1, 0}, 0, 0}));
  EXPECT_EQ(floor.mesh->tVerts.size(), 3u);
  EXPECT_EQ(floor.mesh->tvFace[0], (TVFace{{2, 1, 0}}));
  EXPECT_EQ(scene.root.children[1].object, SceneObject::kHelper);
  EXPECT_EQ(scene.root.children[1].mesh, nullptr);
  EXPECT_EQ(scene.root.children[2].object, SceneObject::kMesh);
  EXPECT_EQ(scene.root.children[2].mesh, nullptr);
  EXPECT_EQ(scene.root.children[3].object, SceneObject::kMesh);
  EXPECT_TRUE(scene.root.children[3].mesh->verts.empty());
}

TEST(ReadSceneFile, NamesPlaceAndDefect) {
  const std::string vertices = R"("vertices": [[0,0,0],[1,0,0]])";
  const std::string textured = vertices + R"(, "faces": [[0,0,0]], "textureVertices": [[0,0,0]])";
  const struct {
    std::string text;
    std::string message;
  } cases[] = {
      // The JSON text itself, with what the lazy parser would not look at.
      {"", "the file is empty"},
      {" \n\t", "line 2, column 2: the text ends too early"},
      {Root("") + "\n x", "line 2, column 2: nothing may follow the document"},
      {Root("") + "{}", "nothing may follow the document"},
      {"[]", "the document must be an object, not an array"},
      {"{\n\"r\u00f6ot\" 1}", "line 2, column 8: \":\" was expected"},
      {Root(R"("x": {"a": [1, 2}})"), "\",\" or \"]\" was expected"},
      {Root(R"("x": truex)"), "\",\" or a closing bracket was expected"},
      {Root(R"("x": "a": [1])"), "\",\" or a closing bracket was expected"},
      {Root(R"("x": 01)"), "may not start with 0"},
      {Root(R"("x": "\q")"), "there is no such escape"},
      {Root(R"("\u12x4": 1)"), "four hexadecimal digits"},
      {Root(R"("name": "\q")"), "there is no such escape"},
      {Root(R"("name": nul)"), "a value was expected"},
      {Root(R"("name": "a" "material": 1)"), "\",\" or \"}\" was expected"},
      {Root(R"("children": [{},])"), "a value was expected"},
      {OfMesh("\n\"vertices\": [[0,0,0,]]"), "line 2, column 21: a value was expected"},
      {OfMesh(R"("faces": [[0,0,0,0,0,]])"), "a value was expected"},
      {OfMesh(R"("faces": [[0,0,0,0,0,[1 2]]])"), "\",\" or \"]\" was expected"},
      {std::string("\xFF\xFE{\0}\0", 6), "is UTF-16; a scene file is UTF-8"},
      {std::string("\xFE\xFF\0{\0}", 6), "is UTF-16; a scene file is UTF-8"},
      {Root("\"name\": \"a\tb\""), "control character"},
      {Root("\"x\": \"\xC0\xAF\""), "not valid UTF-8"},
      {Root("\"x\": \"\xED\xA0\x80\""), "not valid UTF-8"},
      {Document(R"("root": {}, "x": [1 2])"), "\",\" or \"]\" was expected"},
      // The document.
      {R"({"version": 1, "root": {}})", "format: is required, but missing"},
      {R"({"format": "mapexport-scene", "root": {}, "version": null})", "version: is required"},
      {Document(R"("root": null)"), "root: is required, but missing"},
      {R"({"format": "scene"})", R"(format: "scene" is not known (known: "mapexport-scene"))"},
      {R"({"version": 2})", "version: version 2 is not known, only 1 is"},
      {R"({"version": -1})", "version: version -1 is not known, only 1 is"},
      {R"({"version": 1.0})", "version: must be an integer without fraction and exponent, not 1.0"},
      {Document(R"("root": {}, "root": {})"), "root: is given twice"},
      {Document(R"("root": [])"), "root: must be an object, not an array"},
      // Values.
      {Root(R"("name": null, "n\u0061me": "a")"), "root.name: is given twice"},
      {Root(R"("name": 5)"), "root.name: must be text, not a number"},
      {Root(R"("name": "a\u0000b")"), "root.name: holds a NUL character"},
      {Root(R"("name": "\udc00")"), "root.name: holds a lone surrogate"},
      {Root(R"("name": "\ud800\u0041")"), "root.name: holds a lone surrogate"},
      {Root(R"("name": "\ud800")"), "root.name: holds a lone surrogate"},
      {Root(R"("object": "light")"),
       R"(root.object: "light" is not known (known: "none", "helper", "mesh"))"},
      {Root(R"("wireColor": [0])"), "root.wireColor: has 1 element, must have 3"},
      {Root(R"("wireColor": [0, 0])"), "root.wireColor: has 2 elements, must have 3"},
      {Root(R"("wireColor": [0, 256, 0])"), "root.wireColor[1]: 256 is out of range (0 to 255)"},
      {Root(R"("wireColor": [0, -1, 0])"), "root.wireColor[1]: -1 is out of range"},
      {Root(R"("objectTransform": [[1,0,0],[0,1,0],[0,0,1]])"), "has 3 elements, must have 4"},
      {Root(R"("objectTransform": [[1,0,0],[0,1,0],[0,0,null],[0,0,0]])"),
       "root.objectTransform[2][2]: must be a number, not null"},
      {Root(R"("children": [{}, null])"), "root.children[1]: must be an object, not null"},
      {Material(R"("opacity": 1e39)"),
       "materials[0].opacity: 1e39 is out of the range of 32-bit floats"},
      {Material(R"("opacity": -3.4028235677973366e38)"), "is out of the range of 32-bit floats"},
      {Material(R"("opacity": 1e400)"), "1e400 is out of the range"},
      {Material("\"opacity\": 1" + Repeat("0", 400)), "is out of the range of 32-bit floats"},
      {Material(R"("opacity": 0.1e99999999999999999999)"), "is out of the range"},
      {Material(R"("opacity": NaN)"), "a value was expected"},
      {Material(R"("twoSided": 1)"), "materials[0].twoSided: must be a bool, not a number"},
      {Material(R"("shading": 2147483648)"),
       "2147483648 is out of range (-2147483648 to 2147483647)"},
      {Material(R"("shading": 99999999999999999999999)"),
       "99999999999999999999999 is out of range"},
      {Material(R"("shading": 1e0)"), "without fraction and exponent, not 1e0"},
      {Material(R"("diffuseMap": {"class": "checker"})"),
       "materials[0].diffuseMap.class: \"checker\""},
      {Material(R"("diffuse": [0, 0, 0, 0])"), "materials[0].diffuse: has 4 elements, must have 3"},
      // Indices, and what belongs together.
      {OfMesh(R"("faces": [[0,0,0],[0,1,2]], )" + vertices),
       "root.mesh.faces[1]: vertex index 2 is out of range (the mesh has 2 vertices)"},
      {OfMesh(R"("faces": [[0,0,-1]])"), "root.mesh.faces[0][2]: -1 is out of range"},
      {OfMesh(R"("faces": [[0,0,4294967296]])"), "4294967296 is out of range (0 to 4294967295)"},
      {OfMesh(R"("faces": [[0,0]])"), "root.mesh.faces[0]: has 2 elements, must have 3 to 5"},
      {OfMesh(R"("faces": [[0,0,0,0,0,0]])"), "has 6 elements, must have 3 to 5"},
      {OfMesh(R"("faces": [[0,0,0,4294967296]])"),
       "root.mesh.faces[0][3]: 4294967296 is out of range"},
      {OfMesh(R"("faces": [[0,0,0,0,65536]])"), "65536 is out of range (0 to 65535)"},
      {OfMesh(textured), "root.mesh.textureFaces: is required with texture vertices, but missing"},
      {OfMesh(textured + R"(, "textureFaces": [])"),
       "has no entries, must have one for each of 1 face"},
      {OfMesh(textured + R"(, "textureFaces": [[0,1,0]])"),
       "textureFaces[0]: texture vertex index 1 is out of range (the mesh has 1 texture vertex)"},
      {OfMesh(R"("textureFaces": [[0,1]])"), "root.mesh.textureFaces[0]: has 2 elements"},
      {Root(R"("object": "helper", "mesh": {"faces": [[0,0,0]]})"), "(the mesh has no vertices)"},
      {Document(R"("root": {"children": [{}, {"material": 2}]}, "materials": [{}, {}])"),
       "root.children[1].material: material index 2 is out of range (the scene has 2 materials)"},
      {Root(R"("material": 0)"), "root.material: material index 0 is out of range"},
      {Root(R"("material": -1)"),
       "root.material: must be null or an index into materials (from 0 on), not -1"},
      {Material(R"("subMaterials": [4294967296])"),
       "or an index into materials (from 0 on), not 4"},
      {Material(R"("subMaterials": [0, null, 1])"),
       "materials[0].subMaterials[2]: material index 1 is out of range (the scene has 1 material)"},
  };
  for (const auto& [text, message] : cases) {
    EXPECT_THAT(DefectOf(text), HasSubstr(message)) << text;
  }
}

TEST(ReadSceneFile, AcceptsWhatIsUnusual) {
  for (const std::string& text :
       {"\xEF\xBB\xBF" + Root(""), Root("") + " \r\n\t",
        Root(R"("\ud800": 1, "x": "\ud800\u0000", "x": [[], {}, {"": -0.0E-5}])"),
        Root(R"("name": null, "objectTransform": null, "userProperties": null, "material": null,
                   "object": null, "mesh": null, "children": null)"),
        Root(R"("object": "none", "mesh": {"vertices": null, "faces": null})"),
        OfMesh(R"("textureVertices": [], "textureFaces": [[9, 9, 9]])"),
        Material(R"("name": null, "class": null, "ambient": null, "opacity": null, "shading": null,
                       "twoSided": null, "diffuseMap": null, "subMaterials": null)")}) {
    EXPECT_EQ(DefectOf(text), "") << text;
  }
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
    EXPECT_TRUE(SameBytes(scene.materials[0].opacity, number)) << text;
  }
}

TEST(ReadSceneFile, LimitsTheNestingOfNodesOnly) {
  EXPECT_EQ(DefectOf(Nested(kMaxSceneDepth)), "");
  for (const int levels : {kMaxSceneDepth + 1, 100'000}) {
    const std::string defect = DefectOf(Nested(levels));
    EXPECT_THAT(defect, HasSubstr("children[0]: nodes are nested deeper than 1000 levels"));
    EXPECT_LT(defect.size(), 300u);
  }
  const int deep = 100'000;
  const std::string arrays = Repeat("[", deep) + Repeat("]", deep);
  EXPECT_EQ(DefectOf(Root(R"("x": )" + arrays)), "");
  EXPECT_EQ(DefectOf(Root(R"("x": )" + Repeat("[{\"\":", deep) + "1" + Repeat("}]", deep))), "");
  EXPECT_THAT(DefectOf(Root(R"("name": )" + arrays)), HasSubstr("must be text, not an array"));
  EXPECT_THAT(DefectOf(OfMesh(R"("vertices": )" + arrays)), HasSubstr("must be a number"));
  EXPECT_THAT(DefectOf(Repeat("[", deep)), HasSubstr("the text ends too early"));
  EXPECT_THAT(DefectOf(Repeat("{\"root\":", deep)), HasSubstr("the text ends too early"));
}

TEST(ReadSceneFile, CountsNodesAndMaterialsWhereThatIsWanted) {
  const std::string three = Document(R"("materials": [{}, {}], "root": {"children": [{}]})");
  EXPECT_EQ(DefectOf(three, 3), "");
  EXPECT_THAT(DefectOf(three, 2), HasSubstr("root.children[0]: is too much"));
  EXPECT_THAT(DefectOf(three, 1), HasSubstr("materials[1]: is too much"));
}

TEST(ReadSceneFile, TakesNoMemoryForWhatMayBeNoElement) {
  using Big = std::array<char, 1 << 20>;
  const ScratchFile file(R"({"list": [0)" + Repeat(",0", 2'000'000) + "]}");
  const FileText text(file.Path());
  JsonDocument document(file.Path(), text, 4);
  EXPECT_THROW(JsonObject(document).ReadMembers(JsonMember{
                   "list",
                   [](JsonValue& list) {
                     list.ReadList<Big>([](JsonValue& value) -> Big { value.Fail("is none"); });
                   }}),
               SceneError);
}

TEST(ReadSceneFile, TellsWhyAFileCannotBeRead) {
  for (const auto& [path, reason] :
       {std::pair(testing::TempDir() + "no such.scene.json", "No such file"),
        std::pair(testing::TempDir(), "Is a directory")}) {
    try {
      ReadSceneFile(path);
      ADD_FAILURE() << path;
    } catch (const SceneError& error) {
      EXPECT_THAT(error.what(), HasSubstr(path + ": can't be read: " + reason));
    }
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
               {R"("textureFaces"     :)", R"("textureF\u0061ces":)"}};
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
      if (random.Below(40) == 0) size = random.Below(7);
      std::string text = "[";
      for (unsigned k = 0; k < size; ++k) {
        text += k == 0 ? "" : random.Below(4) == 0 ? "\n , " : ",";
        text += random.Below(20) == 0 ? unusual[random.Below(unusual.size())] : usual[k % 3];
      }
      return text + "]";
    };
    std::string plain;
    for (std::size_t list = 0; list < std::size(names); ++list) {
      plain += std::string(list == 0 ? "" : ", ") + names[list].plain + "\n[";
      for (int k = 0; k < 3; ++k)
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

// Cut and changed bytes: the text is either read, and then is sound JSON, or refused.
TEST(ReadSceneFile, SurvivesDamage) {
  const std::string sound = kBackwards;
  for (std::size_t length = 0; length < sound.size(); ++length) {
    EXPECT_NE(DefectOf(sound.substr(0, length)), "") << length;
  }
  const std::string bytes = "{}[]:,\"\\-01e. ntf\x01\x0C\xED\xFF";
  Random random(20);
  for (int i = 0; i < 4000; ++i) {
    std::string text = sound;
    for (unsigned changes = 1 + random.Below(3); changes > 0; --changes) {
      const std::size_t position = random.Below(text.size());
      const char byte = bytes[random.Below(bytes.size())];
      switch (random.Below(3)) {
        case 0:
          text[position] = byte;
          break;
        case 1:
          text.insert(position, 1, byte);
          break;
        default:
          text.erase(position, 1);
      }
    }
    if (DefectOf(text).empty()) {
      EXPECT_EQ(CheckJsonDocument(text).defect, nullptr) << text;
    }
  }
}

// Any finite float, and often one where the formats of numbers differ.
float RandomFloat(Random& random) {
  static constexpr float kSpecial[] = {0.0f,          -0.0f,         1.0f,           1e-45f,
                                       3.4028235e38f, 7.038531e-26f, 0.1f,           1e10f,
                                       1.5e-7f,       8388609.0f,    1.17549435e-38f};
  if (random.Below(3) == 0) return kSpecial[random.Below(std::size(kSpecial))];
  const float number = std::bit_cast<float>(static_cast<std::uint32_t>(random.Bits()));
  return std::isfinite(number) ? number : 2.5f;
}

Point3 RandomPoint(Random& random) {
  const float x = RandomFloat(random);
  const float y = RandomFloat(random);
  return {x, y, RandomFloat(random)};
}

std::string RandomText(Random& random) {
  static constexpr const char* kPieces[] = {"a",
                                            "\"",
                                            "\\",
                                            "/",
                                            "\n\r\t\b\f",
                                            "\x01\x1F\x7F",
                                            "\u00e9",
                                            "\u20ac",
                                            "\U0001f600",
                                            "\uffff",
                                            "\xC2\x9B\xD8\x9C",
                                            "\u2029",
                                            "\u202e\u2066",
                                            "\u200b\ufeff",
                                            "\U000e0001"};
  std::string text;
  while (random.Below(4) != 0) text += kPieces[random.Below(std::size(kPieces))];
  return text;
}

SceneNode RandomNode(Random& random, int levels) {
  SceneNode node;
  node.name = RandomText(random);
  node.userProperties = RandomText(random);
  if (random.Below(2) == 0) {
    for (Point3& row : node.objectTransform.rows) row = RandomPoint(random);
  }
  if (random.Below(2) == 0) node.wireColor[1] = static_cast<std::uint8_t>(random.Bits());
  node.material = static_cast<int>(random.Below(6)) - 1;
  node.object = static_cast<SceneObject>(random.Below(3));
  if (node.object == SceneObject::kMesh && random.Below(4) != 0) {
    Mesh mesh;
    for (std::uint32_t i = random.Below(9); i > 0; --i) mesh.verts.push_back(RandomPoint(random));
    for (std::uint32_t i = random.Below(3); i > 0; --i) mesh.tVerts.push_back(RandomPoint(random));
    for (std::uint32_t i = mesh.verts.empty() ? 0 : random.Below(9); i > 0; --i) {
      Face face{{i % static_cast<std::uint32_t>(mesh.verts.size()), 0, 0}, random.Below(2), 0};
      face.SetMatID(static_cast<std::uint16_t>(random.Below(2) * random.Bits()));
      mesh.faces.push_back(face);
      if (!mesh.tVerts.empty()) {
        mesh.tvFace.push_back({{0, i % static_cast<std::uint32_t>(mesh.tVerts.size()), 0}});
      }
    }
    node.mesh = std::make_shared<const Mesh>(mesh);
  }
  for (std::uint32_t i = levels > 1 ? random.Below(4) : 0; i > 0; --i) {
    node.children.push_back(RandomNode(random, levels - 1));
  }
  return node;
}

SceneMaterial RandomMaterial(Random& random) {
  SceneMaterial material;
  material.materialClass = static_cast<SceneMaterialClass>(random.Below(3));
  material.name = RandomText(random);
  for (Color* color : {&material.ambient, &material.diffuse, &material.specular}) {
    *color = {RandomFloat(random), 0.0f, -0.0f};
  }
  material.opacity = RandomFloat(random);
  material.shininess = RandomFloat(random);
  material.shininessStrength = RandomFloat(random);
  material.shading = static_cast<std::int32_t>(random.Bits());
  material.twoSided = random.Below(2) == 0;
  if (random.Below(2) == 0) {
    material.diffuseMap = SceneTexture{random.Below(2) == 0, RandomText(random), {}};
    if (random.Below(2) == 0) material.diffuseMap->uvTransform.emplace();
  }
  while (random.Below(2) == 0)
    material.subMaterials.push_back(static_cast<int>(random.Below(6)) - 1);
  return material;
}

TEST(WriteSceneFile, GivesTheSameSceneBack) {
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    Random random(seed);
    Scene scene;
    for (int i = 0; i < 5; ++i) scene.materials.push_back(RandomMaterial(random));
    scene.root = RandomNode(random, 5);
    const std::string text = Write(scene);
    const Scene read = Read(text);
    EXPECT_TRUE(Same(read, scene)) << "seed " << seed << "\n" << text;
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
  for (const char* path : {"a.scene.json", "b/A.SCENE.Json", ".scene.json"}) {
    EXPECT_TRUE(IsSceneFile(path)) << path;
  }
  for (const char* path : {"a.json", "scene.json", "a.scene.json ", "a.scene.jso", ""}) {
    EXPECT_FALSE(IsSceneFile(path)) << path;
  }
}

}  // namespace
}  // namespace mapexport
