// Scene files: what is refused, with its place, and what is unusual and read all the same.
#include "scene/JsonValue.h"
#include "support/SceneTexts.h"

namespace mapexport {
namespace {

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
      {"[]", "the document must be an object, not an array"},
      {"{\n\"r\u00f6ot\" 1}", "line 2, column 8: \":\" was expected"},
      {Root(R"("x": {"a": [1, 2}})"), "\",\" or \"]\" was expected"},
      {Root(R"("x": truex)"), "\",\" or a closing bracket was expected"},
      {Root(R"("x": 01)"), "may not start with 0"},
      {Root(R"("x": "\q")"), "there is no such escape"},
      {Root(R"("\u12x4": 1)"), "four hexadecimal digits"},
      {Root(R"("name": nul)"), "a value was expected"},
      {Root(R"("name": "a" "material": 1)"), "\",\" or \"}\" was expected"},
      {OfMesh("\n\"vertices\": [[0,0,0,]]"), "line 2, column 21: a value was expected"},
      {OfMesh(R"("faces": [[0,0,0,0,0,]])"), "a value was expected"},
      {OfMesh(R"("faces": [[0,0,0,0,0,[1 2]]])"), "\",\" or \"]\" was expected"},
      {std::string("\xFF\xFE{\0}\0", 6), "is UTF-16; a scene file is UTF-8"},
      {Root("\"name\": \"a\tb\""), "control character"},
      {Root("\"x\": \"\xC0\xAF\""), "not valid UTF-8"},
      {Root("\"x\": \"\xED\xA0\x80\""), "not valid UTF-8"},
      // The document.
      {R"({"version": 1, "root": {}})", "format: is required, but missing"},
      {R"({"format": "mapexport-scene", "root": {}, "version": null})", "version: is required"},
      {Document(R"("root": null)"), "root: is required, but missing"},
      {R"({"format": "scene"})", R"(format: "scene" is not known (known: "mapexport-scene"))"},
      {R"({"version": 2})", "version: version 2 is not known, only 1 is"},
      {R"({"version": 1.0})", "version: must be an integer without fraction and exponent, not 1.0"},
      {Document(R"("root": {}, "root": {})"), "root: is given twice"},
      {Document(R"("root": [])"), "root: must be an object, not an array"},
      // Values.
      {Root(R"("name": null, "n\u0061me": "a")"), "root.name: is given twice"},
      {Root(R"("name": 5)"), "root.name: must be text, not a number"},
      {Root(R"("name": "a\u0000b")"), "root.name: holds a NUL character"},
      {Root(R"("name": "\udc00")"), "root.name: holds a lone surrogate"},
      {Root(R"("name": "\ud800\u0041")"), "root.name: holds a lone surrogate"},
      {Root(R"("object": "light")"),
       R"(root.object: "light" is not known (known: "none", "helper", "mesh"))"},
      {Root(R"("wireColor": [0])"), "root.wireColor: has 1 element, must have 3"},
      {Root(R"("wireColor": [0, 256, 0])"), "root.wireColor[1]: 256 is out of range (0 to 255)"},
      {Root(R"("objectTransform": [[1,0,0],[0,1,0],[0,0,1]])"), "has 3 elements, must have 4"},
      {Root(R"("objectTransform": [[1,0,0],[0,1,0],[0,0,null],[0,0,0]])"),
       "root.objectTransform[2][2]: must be a number, not null"},
      {Root(R"("children": [{}, null])"), "root.children[1]: must be an object, not null"},
      {Material(R"("opacity": 1e39)"),
       "materials[0].opacity: 1e39 is out of the range of 32-bit floats"},
      {Material(R"("opacity": -3.4028235677973366e38)"), "is out of the range of 32-bit floats"},
      {Material(R"("opacity": 0.1e99999999999999999999)"), "is out of the range"},
      {Material(R"("twoSided": 1)"), "materials[0].twoSided: must be a bool, not a number"},
      {Material(R"("shading": 2147483648)"),
       "2147483648 is out of range (-2147483648 to 2147483647)"},
      {Material(R"("shading": 99999999999999999999999)"),
       "99999999999999999999999 is out of range"},
      {Material(R"("diffuseMap": {"class": "checker"})"),
       "materials[0].diffuseMap.class: \"checker\""},
      // Indices, and what belongs together.
      {OfMesh(R"("faces": [[0,0,0],[0,1,2]], )" + vertices),
       "root.mesh.faces[1]: vertex index 2 is out of range (the mesh has 2 vertices)"},
      {OfMesh(R"("faces": [[0,0,-1]])"), "root.mesh.faces[0][2]: -1 is out of range"},
      {OfMesh(R"("faces": [[0,0,4294967296]])"), "4294967296 is out of range (0 to 4294967295)"},
      {OfMesh(R"("faces": [[0,0]])"), "root.mesh.faces[0]: has 2 elements, must have 3 to 5"},
      {OfMesh(R"("faces": [[0,0,0,4294967296]])"),
       "root.mesh.faces[0][3]: 4294967296 is out of range"},
      {OfMesh(R"("faces": [[0,0,0,0,65536]])"), "65536 is out of range (0 to 65535)"},
      {OfMesh(textured), "root.mesh.textureFaces: is required with texture vertices, but missing"},
      {OfMesh(textured + R"(, "textureFaces": [])"),
       "has no entries, must have one for each of 1 face"},
      {OfMesh(textured + R"(, "textureFaces": [[0,1,0]])"),
       "textureFaces[0]: texture vertex index 1 is out of range (the mesh has 1 texture vertex)"},
      {OfMesh(textured + R"(, "textureFaces": [[0,0,0]], "cornerNormals": [[0,0,1],[0,0,1]])"),
       "root.mesh.cornerNormals: has 2 entries, must have three for each of 1 face"},
      {OfMesh(R"("cornerNormals": [[0,0,1]])"),
       "root.mesh.cornerNormals: has 1 entry, must have three for each of no faces"},
      {OfMesh(R"("cornerNormals": [[0,0,1e39]])"),
       "root.mesh.cornerNormals[0][2]: 1e39 is out of the range of 32-bit floats"},
      {Root(R"("object": "helper", "mesh": {"faces": [[0,0,0]]})"), "(the mesh has no vertices)"},
      {Document(R"("root": {"children": [{}, {"material": 2}]}, "materials": [{}, {}])"),
       "root.children[1].material: material index 2 is out of range (the scene has 2 materials)"},
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
        OfMesh(R"("vertices": [[0, 0, 0]], "faces": [[0, 0, 0]], "cornerNormals": [])"),
        Material(R"("name": null, "class": null, "ambient": null, "opacity": null, "shading": null,
                       "twoSided": null, "diffuseMap": null, "subMaterials": null)")}) {
    EXPECT_EQ(DefectOf(text), "") << text;
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

}  // namespace
}  // namespace mapexport
