// Reads the lists of meshes where a scene file has them as text.
#include "scene/ReadMesh.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace mapexport {
namespace {

constexpr std::int64_t kMaxUint32 = std::numeric_limits<std::uint32_t>::max();

// What an index refers to may come later, so that it is held against the count only afterwards.
std::uint32_t ReadMeshIndex(JsonValue& value) {
  return static_cast<std::uint32_t>(value.ReadInteger(0, kMaxUint32));
}

Face ReadFace(JsonValue& value) {
  Face face;
  std::size_t count = 0;
  value.ReadArray([&](JsonValue& v) {
    if (count < 3) {
      face.v[count] = ReadMeshIndex(v);
    } else if (count == 3) {
      face.smGroup = static_cast<std::uint32_t>(v.ReadInteger(0, kMaxUint32));
    } else if (count == 4) {
      face.SetMatID(static_cast<std::uint16_t>(v.ReadInteger(0, 0xFFFF)));
    } else {
      v.Skip();
    }
    ++count;
  });
  if (count < 3 || count > 5) value.FailSize(count, "3 to 5");
  return face;
}

TVFace ReadTextureFace(JsonValue& value) {
  return {value.ReadTuple<std::uint32_t, 3>(ReadMeshIndex)};
}

}  // namespace

Point3 ReadPoint(JsonValue& value) {
  const auto numbers =
      value.ReadTuple<float, 3>([](JsonValue& number) { return number.ReadFloat(); });
  return {numbers[0], numbers[1], numbers[2]};
}

FileMesh ReadMesh(JsonValue& value) {
  Mesh mesh;
  bool hasTextureFaces = false;
  std::vector<Point3> cornerNormals;
  value.ReadObject(
      JsonMember{"vertices", [&](JsonValue& v) { mesh.verts = v.ReadMeshList<Point3>(ReadPoint); }},
      JsonMember{"faces", [&](JsonValue& v) { mesh.faces = v.ReadMeshList<Face>(ReadFace); }},
      JsonMember{"textureVertices",
                 [&](JsonValue& v) { mesh.tVerts = v.ReadMeshList<Point3>(ReadPoint); }},
      JsonMember{"textureFaces",
                 [&](JsonValue& v) {
                   mesh.tvFace = v.ReadMeshList<TVFace>(ReadTextureFace);
                   hasTextureFaces = true;
                 }},
      JsonMember{"cornerNormals",
                 [&](JsonValue& v) { cornerNormals = v.ReadMeshList<Point3>(ReadPoint); }});
  return FinishMesh(value, std::move(mesh), hasTextureFaces, cornerNormals);
}

}  // namespace mapexport
