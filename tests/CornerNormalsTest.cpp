// Corner normals of scene files: the smoothing groups made of them must give them back, by the
// exporter's literal smoothing.
#include "reference/LiteralGeometry.h"
#include "support/SceneTexts.h"

namespace mapexport {
namespace {

constexpr std::uint32_t kEdge = 12;  ///< of a square sheet, in squares

using Normals = std::vector<Point3>;

/// A sheet with random heights, in patches that are connected by edges and have a bit each.
Mesh RandomSheet(std::mt19937& random) {
  const auto pick = [&](std::size_t count) { return random() % count; };
  Mesh mesh;
  for (std::uint32_t y = 0; y <= kEdge; ++y) {
    for (std::uint32_t x = 0; x <= kEdge; ++x) {
      mesh.verts.push_back(
          {static_cast<float>(x), static_cast<float>(y), static_cast<float>(pick(1000)) / 500.0f});
    }
  }
  // Both triangles of square i are faces 2 * i and 2 * i + 1, and in one patch.
  std::vector<std::uint32_t> patchOf(kEdge * kEdge, 0);
  for (std::uint32_t patch = 1; patch < 31; ++patch) patchOf[pick(patchOf.size())] = patch;
  for (std::size_t round = 0; round < 40 * patchOf.size(); ++round) {
    const std::size_t at = pick(patchOf.size());
    const std::size_t right = at % kEdge + 1 < kEdge ? at + 1 : at;
    const std::size_t below = at + kEdge < patchOf.size() ? at + kEdge : at;
    for (const std::size_t other : {right, below}) {
      if (patchOf[other] == 0) patchOf[other] = patchOf[at];
      if (patchOf[at] == 0) patchOf[at] = patchOf[other];
    }
  }
  for (std::uint32_t i = 0; i < patchOf.size(); ++i) {
    const std::uint32_t v = i / kEdge * (kEdge + 1) + i % kEdge;
    const std::uint32_t bits = 2u << patchOf[i] % 31;
    mesh.faces.push_back({{v, v + 1, v + kEdge + 1}, bits, 0});
    mesh.faces.push_back({{v + 1, v + kEdge + 2, v + kEdge + 1}, bits, 0});
  }
  return mesh;
}

/// What the exporter makes of the smoothing groups, where the node `mirrors` the mesh or not: the
/// normals of the world, and back in the mesh's space.
Normals Smoothed(const Mesh& mesh, bool mirrors) {
  const auto mirrored = [mirrors](Point3 p) { return mirrors ? Point3{-p.x, p.y, p.z} : p; };
  std::vector<GroupFace> faces(mesh.faces.size());
  for (std::size_t f = 0; f < faces.size(); ++f) {
    std::array<std::uint32_t, 3> v = mesh.faces[f].v;
    if (mirrors) std::swap(v[0], v[2]);
    const Point3 corner = mirrored(mesh.verts[v[0]]);
    faces[f].v = v;
    faces[f].normal = Normalize(
        CrossProd(mirrored(mesh.verts[v[1]]) - corner, mirrored(mesh.verts[v[2]]) - corner));
    faces[f].smoothing = mesh.faces[f].smGroup;
  }
  Normals normals;
  for (std::size_t f = 0; f < faces.size(); ++f) {
    for (std::size_t k = 0; k < 3; ++k) {
      normals.push_back(mirrored(literal::CornerNormal(faces, f, mirrors ? 2 - k : k)));
    }
  }
  return normals;
}

/// Whether two patches have about the same normals at both ends of an edge between them, by chance.
/// They are one surface then, and what breaks between them elsewhere is a lost crease.
bool PatchesMerge(const Mesh& mesh, const Normals& normals) {
  const auto agreeing = [&](std::size_t f, std::size_t g) {
    std::size_t corners = 0;
    for (std::size_t k = 0; k < 9; ++k) {
      const std::size_t ofF = k / 3;
      const std::size_t ofG = k % 3;
      if (mesh.faces[f].v[ofF] == mesh.faces[g].v[ofG] &&
          DotProd(normals[3 * f + ofF], normals[3 * g + ofG]) > 0.999f)
        ++corners;
    }
    return corners;
  };
  for (std::size_t f = 0; f < mesh.faces.size(); ++f) {
    for (std::size_t g = 0; g < f; ++g) {
      if (mesh.faces[f].smGroup != mesh.faces[g].smGroup && agreeing(f, g) == 2) return true;
    }
  }
  return false;
}

/// `mesh` as a scene file, with those normals.
Mesh ReadWith(const Mesh& mesh, const Normals& normals) {
  Scene scene;
  scene.root.object = SceneObject::kMesh;
  scene.root.mesh = std::make_shared<const Mesh>(mesh);
  std::string text = Write(scene);
  std::ostringstream list;
  list << "\"cornerNormals\": [";
  for (const Point3& n : normals) {
    list << (&n == normals.data() ? "[" : ", [") << n.x << ", " << n.y << ", " << n.z << "]";
  }
  text.insert(text.find("\"vertices\""), list.str() + "], ");
  return *Read(text).root.mesh;
}

TEST(CornerNormals, ComeBackFromTheSmoothingGroupsMadeOfThem) {
  for (const unsigned seed : Seeds(12)) {
    std::mt19937 random(seed);
    Mesh mesh = RandomSheet(random);
    Normals expected = Smoothed(mesh, false);
    while (PatchesMerge(mesh, expected)) {
      mesh = RandomSheet(random);
      expected = Smoothed(mesh, false);
    }
    Normals normals = expected;
    const float lengths[] = {1.0f, 3.0f, 1e-3f, 1e-17f, 1e17f, 1e-30f, 1e30f};
    for (Point3& n : normals) n = n * lengths[random() % std::size(lengths)];
    for (Face& face : mesh.faces) face.smGroup = static_cast<std::uint32_t>(random());
    const Mesh read = ReadWith(mesh, normals);
    for (const bool mirrors : {false, true}) {
      const Normals smoothed = Smoothed(read, mirrors);
      for (std::size_t i = 0; i < smoothed.size(); ++i) {
        ASSERT_GT(DotProd(smoothed[i], expected[i]), 0.9995f) << "seed " << seed << " corner " << i;
      }
    }
  }
}

TEST(CornerNormals, OfZeroKeepTheirFaceFlat) {
  std::mt19937 random(5);
  Mesh mesh = RandomSheet(random);
  for (Face& face : mesh.faces) face.smGroup = 2;
  Normals normals = Smoothed(mesh, false);
  for (std::size_t i = 0; i < 15; ++i) normals[i] = {};
  const Mesh read = ReadWith(mesh, normals);
  for (std::size_t f = 0; f < read.faces.size(); ++f) {
    EXPECT_EQ(read.faces[f].smGroup, f < 5 ? 0u : 2u) << f;
  }
}

}  // namespace
}  // namespace mapexport
