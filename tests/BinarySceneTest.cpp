// Scene files in binary.
#include <bit>
#include <limits>
#include <vector>

#include "scene/BinarySceneFile.h"
#include "support/SceneTexts.h"
#include "system/Descriptor.h"

namespace mapexport {
namespace {

using Words = std::vector<std::uint32_t>;

std::uint32_t Bits(float number) {
  return std::bit_cast<std::uint32_t>(number);
}

/// The lists of a triangle: three points, at byte 48 a face, at 80 three texture corners.
Words Lists() {
  Words words(24, 0);
  words[3] = words[7] = Bits(1);
  words[13] = words[20] = 1;
  words[14] = words[21] = 2;
  words[16] = 7;
  return words;
}

const std::string kMesh =
    R"("vertices": {"offset": 0, "count": 3}, "faces": {"offset": 48, "count": 1})";

std::string Binary(const std::string& json, const Words& lists, std::uint32_t version = 1) {
  BinarySceneHeader header{{}, version, 0, json.size(), lists.size() * sizeof(Words::value_type)};
  kBinarySceneMagic.copy(header.magic, sizeof header.magic);
  std::string file(reinterpret_cast<const char*>(&header), sizeof header);
  file += json;
  file.resize(AlignList(file.size()));
  return file.append(reinterpret_cast<const char*>(lists.data()), header.listBytes);
}

Scene ReadBinary(const std::string& bytes, const SceneLimits& limits = {}) {
  const ScratchFile file(bytes);
  return ReadBinaryScene(OpenToRead(file.Path()), "a", limits);
}

std::string BinaryDefect(const std::string& bytes, const SceneLimits& limits = {}) {
  try {
    ReadBinary(bytes, limits);
  } catch (const SceneError& error) {
    return std::string(error.what()).substr(3);
  }
  return "";
}

TEST(BinarySceneTest, IsReadAsItIsWritten) {
  const std::string twoNodes =
      Root(R"("children": [{"mesh": {)" + kMesh + R"(}}, {"mesh": {)" + kMesh + "}}]");
  const Scene scene = ReadBinary(Binary(twoNodes, Lists()));
  const auto& nodes = scene.root.children;
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(nodes[0].mesh, nodes[1].mesh) << "the same lists are one mesh";
  EXPECT_EQ(nodes[0].mesh->verts[1], (Point3{1, 0, 0}));
  EXPECT_EQ(nodes[0].mesh->faces[0].v, (std::array<std::uint32_t, 3>{0, 1, 2}));
  EXPECT_EQ(nodes[0].mesh->faces[0].MatID(), 7);
  std::ostringstream out;
  WriteBinaryScene(scene, out);
  const std::string again = out.str();
  EXPECT_EQ(Write(ReadBinary(again)), Write(scene));
  // The lists, once, on both sides.
  EXPECT_EQ(again.substr(again.size() - 80), Binary("", Lists()).substr(48, 80));
}

TEST(BinarySceneTest, NamesPlaceAndDefect) {
  const auto with = [](std::size_t word, std::uint32_t value) {
    Words words = Lists();
    words[word] = value;
    return words;
  };
  const struct {
    std::string mesh;
    Words lists;
    std::string defect;
  } rows[] = {
      {kMesh, with(4, Bits(std::numeric_limits<float>::infinity())),
       "root.mesh.vertices[1]: is not finite"},
      {kMesh, with(13, 3),
       "root.mesh.faces[0]: vertex index 3 is out of range (the mesh has 3 vertices)"},
      {kMesh, with(16, 65536), "root.mesh.faces[0]: material id 65536 must be 0 to 65535"},
      {kMesh + R"(, "textureVertices": {"offset": 80, "count": 1})", with(20, 0),
       "root.mesh.textureFaces: is required with texture vertices, but missing"},
      {R"("vertices": {"offset": 2, "count": 3})", Lists(),
       "root.mesh.vertices: offset 2 is no multiple of 4"},
      {R"("vertices": {"offset": 60, "count": 4})", Lists(),
       "root.mesh.vertices: 4 entries of 12 bytes from byte 60 on reach beyond the lists, which "
       "have "
       "96 bytes"},
      {R"("faces": {"offset": 0, "count": 9223372036854775807})", Lists(),
       "root.mesh.faces: 9223372036854775807 entries of 20 bytes from byte 0 on reach beyond the "
       "lists, which have 96 bytes"},
      {R"("vertices": {"offset": 9223372036854775804, "count": 1})", Lists(),
       "root.mesh.vertices: 1 entries of 12 bytes from byte 9223372036854775804 on reach beyond "
       "the "
       "lists, which have 96 bytes"},
      {R"("vertices": {"offset": 0, "count": 3}, "faces": {"offset": 32, "count": 1})", Lists(),
       "root.mesh.faces: bytes 32 to 52 are in another list, too"},
      {R"("vertices": {"offset": 0, "count": 3}, "textureVertices": {"offset": 0, "count": 3})",
       Lists(), "root.mesh.textureVertices: bytes 0 to 36 are in another list, too"},
      {kMesh + R"(, "cornerNormals": {"offset": 80, "count": 1})", Lists(),
       "root.mesh.cornerNormals: has 1 entry, must have three for each of 1 face"},
      {kMesh + R"(, "cornerNormals": {"offset": 80, "count": 1})", with(21, 0x7FC00000),
       "root.mesh.cornerNormals[0]: is not finite"},
      {kMesh + R"(, "cornerNormals": {"offset": 12, "count": 3})", Lists(),
       "root.mesh.cornerNormals: bytes 12 to 48 are in another list, too"},
      {R"("vertices": {"count": 3})", Lists(), "root.mesh.vertices: needs \"offset\""},
      {R"("vertices": {"offset": 3})", Lists(), "root.mesh.vertices: needs \"count\""},
      {R"("vertices": [[0, 0, 0]])", Lists(),
       "root.mesh.vertices: must be an object, not an array"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(BinaryDefect(Binary(OfMesh(row.mesh), row.lists)), row.defect);
  }
  const std::string shared =
      Root(R"("children": [{"mesh": {)" + kMesh + R"(}}, {"mesh": {)" + kMesh + "}}]");
  EXPECT_EQ(BinaryDefect(Binary(shared, Lists()), {.mostBytes = 112}), "");
  EXPECT_THAT(BinaryDefect(Binary(shared, Lists()), {.mostBytes = 111}),
              testing::StartsWith("root.children[1].mesh: is too much: the meshes of all nodes may "
                                  "have 111 bytes together"));
}

// A fold over the edge 0-1, smooth in the corner normals and with other groups in the faces.
TEST(BinarySceneTest, SmoothsByCornerNormals) {
  Words words(12 + 12 + 18, 0);
  words[3] = words[7] = words[8] = words[10] = words[11] = Bits(1);
  const std::uint32_t faces[] = {0, 1, 2, 8, 7, 1, 0, 3, 16, 9};
  std::ranges::copy(faces, words.begin() + 12);
  for (std::size_t corner = 0; corner < 6; ++corner) {
    words[24 + 3 * corner + (corner == 2 ? 2 : 1)] = Bits(1);
  }
  const std::string mesh =
      R"("mesh": {"vertices": {"offset": 0, "count": 4}, "faces": {"offset": 48, "count": 2},
                  "cornerNormals": {"offset": 96, "count": 6}})";
  const std::string twoNodes = Root(R"("children": [{)" + mesh + "}, {" + mesh + "}]");
  // The normals of a shared mesh take memory only once.
  const Scene scene = ReadBinary(Binary(twoNodes, words), {.mostBytes = 2 * 88 + 72});
  const auto& nodes = scene.root.children;
  EXPECT_EQ(nodes[0].mesh, nodes[1].mesh);
  EXPECT_THAT(nodes[0].mesh->faces,
              ElementsAre(Face{{0, 1, 2}, 2, 7u << 16}, Face{{1, 0, 3}, 2, 9u << 16}));
  // Also the campaign of damaged files starts from this one.
  const std::string golden = MAPEXPORT_SOURCE_DIR "/tests/golden/corner-normals.scene";
  EXPECT_EQ(Write(ReadSceneFile(golden + ".bin")), Write(ReadSceneFile(golden + ".json")));
}

TEST(BinarySceneTest, RefusesFilesOfOtherSizesAndVersions) {
  const std::string sound = Binary(OfMesh(kMesh), Lists());
  EXPECT_EQ(BinaryDefect(sound), "");
  for (std::size_t size = 0; size < sound.size(); ++size) {
    EXPECT_NE(BinaryDefect(sound.substr(0, size)), "") << size;
  }
  EXPECT_THAT(BinaryDefect(sound + "x"), testing::HasSubstr("its header says that the lists are"));
  EXPECT_EQ(BinaryDefect(Binary(OfMesh(kMesh), Lists(), 2)), "version 2 is not known, only 1 is");
  EXPECT_EQ(BinaryDefect(OfMesh(kMesh)), "is no binary scene file: it begins with other bytes");
  EXPECT_EQ(BinaryDefect(""), "the file is empty");
  std::string reserved = sound;
  reserved[20] = 7;
  EXPECT_EQ(BinaryDefect(reserved), "bytes 20 to 24 are reserved and must be 0, not 7");
  EXPECT_EQ(BinaryDefect(sound, {.mostJson = 20}),
            "its JSON has 139 bytes, more than the 20 that are allowed");
  // No more is read than the block with the first zero.
  std::string hole = Binary("", {});
  const std::uint64_t claimed = std::uint64_t{1} << 31;
  hole.replace(24, 8, reinterpret_cast<const char*>(&claimed), 8);
  const ScratchFile file(hole);
  fs::resize_file(file.Path(), AlignList(40 + claimed));
  try {
    ReadBinaryScene(OpenToRead(file.Path()), "a");
    ADD_FAILURE() << "a hole is a scene";
  } catch (const SceneError& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("a: line 1, column 1: "));
  }
}

}  // namespace
}  // namespace mapexport
