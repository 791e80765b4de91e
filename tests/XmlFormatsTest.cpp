// Collada and X3D files: what arrives in the host's scene.
#include <fmt/format.h>

#include "support/ImportedScenes.h"

namespace mapexport {
namespace {

constexpr const char* kSkin = R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<library_effects><effect id="fx"><profile_COMMON><technique sid="t"><lambert><diffuse><color>
 0.5 0.25 0 1</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>
<library_materials><material id="Mat"><instance_effect url="#fx"/></material></library_materials>
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="pa" count="9"> 0 0 0 1 0 0
0 1 0</float_array><technique_common><accessor source="#pa" count="3" stride="3">
<param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor>
</technique_common></source><vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="1" material="Mat"><input semantic="VERTEX" source="#v" offset="0"/><p> 0 1 2</p>
</triangles></mesh></geometry></library_geometries>
<library_controllers><controller id="c"><skin source="#g"><bind_shape_matrix> 2 0 0 5 0 2 0 0 0 0 2 0
0 0 0 1</bind_shape_matrix><source id="j"><Name_array id="ja" count="1">B</Name_array>
<technique_common><accessor source="#ja" count="1" stride="1"><param name="JOINT" type="name"/>
</accessor></technique_common></source><source id="i"><float_array id="ia" count="16">1 0 0 0 0 1 0 0
0 0 1 0 0 0 0 1</float_array><technique_common><accessor source="#ia" count="1" stride="16">
<param name="TRANSFORM" type="float4x4"/></accessor></technique_common></source>
<source id="w"><float_array id="wa" count="1">1</float_array><technique_common>
<accessor source="#wa" count="1" stride="1"><param name="WEIGHT" type="float"/></accessor>
</technique_common></source><joints><input semantic="JOINT" source="#j"/>
<input semantic="INV_BIND_MATRIX" source="#i"/></joints><vertex_weights count="3">
<input semantic="JOINT" source="#j" offset="0"/><input semantic="WEIGHT" source="#w" offset="1"/>
<vcount> 1 1 1</vcount><v> 0 0 0 0 0 0</v></vertex_weights></skin></controller></library_controllers>
<library_visual_scenes><visual_scene id="s"><node id="b" sid="B" name="B" type="JOINT"/>
<node id="n" name="Skin"><translate> 1 2 3</translate><instance_controller url="#c"/>CHILD</node>
</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>
)";

TEST_F(ImporterTest, ColladaSkinsStandByTheirBindShapeAndNumbersMayFollowBlanks) {
  std::string text = kSkin;
  const std::size_t child = text.find("CHILD");
  text.erase(child, 5);
  const ImportedScene alone = Import("skin.dae", text);
  const Matrix3 place = Rows({200, 0, 0}, {0, 0, 200}, {0, -200, 0}, {600, -300, 200});
  EXPECT_EQ(Named(alone, "Skin").objectTransform, place);
  EXPECT_EQ(alone.scene.materials.at(0).diffuse, (Color{0.5f, 0.25f, 0}));
  EXPECT_THAT(RemarksOf(alone), Contains(HasSubstr("1 bone")));

  text.insert(child, "<node id=\"m\" name=\"Below\"/>");
  const ImportedScene with = Import("skin.dae", text);
  EXPECT_EQ(Named(with, "Below").objectTransform.rows[3], (Point3{100, -300, 200}));
  const SceneNode& inner = Named(with, "Skin").children.at(1);
  EXPECT_EQ(inner.name, "Skin");
  EXPECT_EQ(inner.objectTransform, place);
  EXPECT_NE(inner.mesh, nullptr);
}

TEST_F(ImporterTest, X3dGroupsThatAreUsedAgain) {
  const auto document = [](const std::string& scene) {
    return R"(<?xml version="1.0"?><X3D version="3.0" profile="Immersive"><Scene>)" + scene +
           "</Scene></X3D>";
  };
  const std::string group =
      R"(<Group DEF="Stone"><Shape><IndexedFaceSet coordIndex="0 1 2 -1">)"
      R"(<Coordinate point="0 0 0 1 0 0 0 1 0"/></IndexedFaceSet></Shape></Group>)";
  const ImportedScene twice =
      Import("twice.x3d",
             document(R"(<Transform DEF="A">)" + group +
                      R"(</Transform><Transform DEF="B" translation="1 2 3"><Group USE="Stone"/>)"
                      R"(<Transform DEF="C"><Group USE="Stone"/></Transform></Transform>)"
                      R"(<Transform DEF="D">)" +
                      group + "</Transform>"));
  EXPECT_EQ(TrianglesOf(twice), 4u);
  for (const char* name : {"A", "B", "C", "D"}) {
    EXPECT_EQ(Named(twice, name).children.at(0).name, "Stone") << name;
  }
  EXPECT_EQ(Named(twice, "C").objectTransform.rows[3], (Point3{100, -300, 200}));

  // A group within itself is empty; one that doubles with every level is refused.
  EXPECT_EQ(TrianglesOf(
                Import("loop.x3d", document(group + R"(<Group DEF="L"><Group USE="L"/></Group>)"))),
            1u);
  std::string levels = group;
  for (int i = 0; i < 40; ++i) {
    const std::string last = i == 0 ? "Stone" : "L" + std::to_string(i - 1);
    levels +=
        fmt::format(R"(<Group DEF="L{0}"><Group USE="{1}"/><Group USE="{1}"/></Group>)", i, last);
  }
  EXPECT_THAT(Refusal(Write("levels.x3d", document(levels))), HasSubstr("used again too often"));
}

}  // namespace
}  // namespace mapexport
