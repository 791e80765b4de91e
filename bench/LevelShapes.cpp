#include "LevelShapes.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <utility>

namespace mapexport {
namespace {

constexpr int kWallQuads = 8;
constexpr int kFenceQuads = 4;
constexpr int kSphereSegments = 24;
constexpr int kSphereRings = 12;
constexpr int kHillQuads = 8;  // from one point of the hills' lattice to the next
constexpr float kHillHeight = 240.0f;
constexpr float kLargestJitter = 0.05f;  // two neighbours are at most 2 * sqrt(3) of it apart

/// The nearest multiple of 1/1024, which removes differences between platforms' mathematical
/// functions.
float Rounded(double x) {
  return static_cast<float>(std::round(x * 1024.0) / 1024.0);
}

/// A rows by columns grid of quads with texture coordinates from 0 to `repeats`; `at` gives the
/// positions of its vertices.
Mesh Grid(int columns, int rows, float repeats, std::uint32_t smoothing,
          const std::function<Point3(int, int)>& at) {
  Mesh mesh;
  for (int j = 0; j <= rows; ++j) {
    for (int i = 0; i <= columns; ++i) {
      mesh.verts.push_back(at(i, j));
      mesh.tVerts.push_back({repeats * static_cast<float>(i) / static_cast<float>(columns),
                             repeats * static_cast<float>(j) / static_cast<float>(rows), 0.0f});
    }
  }
  const auto width = static_cast<std::uint32_t>(columns) + 1;
  for (std::uint32_t j = 0; j < static_cast<std::uint32_t>(rows); ++j) {
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(columns); ++i) {
      const std::uint32_t a = j * width + i;
      const std::uint32_t b = a + width;
      for (const auto& corners : {std::array{a, a + 1, b + 1}, std::array{a, b + 1, b}}) {
        mesh.faces.push_back({corners, smoothing, 0});
        mesh.tvFace.push_back({corners});
      }
    }
  }
  return mesh;
}

/// A pseudorandom whole number from 0 to below 1024.
std::uint32_t Noise(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
  std::uint32_t hash = x * 0x9E3779B1u + y * 0x85EBCA77u + seed * 0xC2B2AE3Du;
  hash = (hash ^ (hash >> 15)) * 0x2C1B3C6Du;
  hash = (hash ^ (hash >> 12)) * 0x297A2D39u;
  return (hash ^ (hash >> 15)) & 1023u;
}

/// The ground's height at a vertex of the terrain, which is counted in quads from its corner.
float GroundHeight(int x, int y, std::uint32_t seed) {
  const auto lattice = [&](int i, int j) {
    return static_cast<double>(
        Noise(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(j), seed));
  };
  const auto ease = [](int q) {
    const double t = static_cast<double>(q % kHillQuads) / kHillQuads;
    return t * t * (3.0 - 2.0 * t);
  };
  const int i = x / kHillQuads;
  const int j = y / kHillQuads;
  const double s = ease(x);
  const double t = ease(y);
  const double near = lattice(i, j) * (1.0 - s) + lattice(i + 1, j) * s;
  const double far = lattice(i, j + 1) * (1.0 - s) + lattice(i + 1, j + 1) * s;
  return Rounded(static_cast<double>(kHillHeight) * (near * (1.0 - t) + far * t) / 1024.0);
}

}  // namespace

Mesh TerrainPatch(int px, int py, std::uint32_t seed, std::uint32_t smoothing) {
  return Grid(kPatchQuads, kPatchQuads, 4.0f, smoothing, [&](int i, int j) {
    constexpr float kQuad = kPatchSize / kPatchQuads;
    return Point3{kQuad * static_cast<float>(i), kQuad * static_cast<float>(j),
                  GroundHeight(px * kPatchQuads + i, py * kPatchQuads + j, seed)};
  });
}

Mesh RoomWall(const Point3& origin, const Point3& u, const Point3& v, std::uint32_t smoothing) {
  Mesh mesh = Grid(kWallQuads, kWallQuads, 2.0f, smoothing, [&](int i, int j) {
    return origin + u * (static_cast<float>(i) / kWallQuads) +
           v * (static_cast<float>(j) / kWallQuads);
  });
  for (std::size_t f = 0; f < mesh.faces.size(); ++f) {
    mesh.faces[f].SetMatID(f < std::size_t{2} * kWallQuads ? kSkirting : kWall);
  }
  return mesh;
}

Mesh Sphere(float radius, bool isTextured) {
  Mesh mesh;
  const auto ringAngle = [](int ring) { return std::numbers::pi * ring / kSphereRings; };
  const auto r = static_cast<double>(radius);
  mesh.verts.push_back({0.0f, 0.0f, radius});
  for (int ring = 1; ring < kSphereRings; ++ring) {
    for (int s = 0; s < kSphereSegments; ++s) {
      const double around = 2.0 * std::numbers::pi * s / kSphereSegments;
      mesh.verts.push_back({Rounded(r * std::sin(ringAngle(ring)) * std::cos(around)),
                            Rounded(r * std::sin(ringAngle(ring)) * std::sin(around)),
                            Rounded(r * std::cos(ringAngle(ring)))});
    }
  }
  mesh.verts.push_back({0.0f, 0.0f, -radius});
  const auto last = static_cast<std::uint32_t>(mesh.verts.size() - 1);
  const auto vertex = [&](int ring, int s) {
    if (ring == 0) return 0u;
    if (ring == kSphereRings) return last;
    return static_cast<std::uint32_t>(1 + (ring - 1) * kSphereSegments + s % kSphereSegments);
  };
  const auto texture = [](int ring, int s) {
    return static_cast<std::uint32_t>(ring * (kSphereSegments + 1) + s);
  };
  const auto add = [&](const std::array<std::pair<int, int>, 3>& corners, int ring) {
    Face face;
    TVFace textureFace;
    for (std::size_t k = 0; k < 3; ++k) {
      face.v[k] = vertex(corners[k].first, corners[k].second);
      textureFace.t[k] = texture(corners[k].first, corners[k].second);
    }
    face.smGroup = ring < kSphereRings / 2 ? 2 : 4;
    mesh.faces.push_back(face);
    if (isTextured) mesh.tvFace.push_back(textureFace);
  };
  for (int ring = 0; ring < kSphereRings; ++ring) {
    for (int s = 0; s < kSphereSegments; ++s) {
      if (ring + 1 < kSphereRings) add({{{ring, s}, {ring + 1, s}, {ring + 1, s + 1}}}, ring);
      if (ring > 0) add({{{ring, s}, {ring + 1, s + 1}, {ring, s + 1}}}, ring);
    }
  }
  for (int ring = 0; isTextured && ring <= kSphereRings; ++ring) {
    for (int s = 0; s <= kSphereSegments; ++s) {
      mesh.tVerts.push_back(
          {static_cast<float>(s) / kSphereSegments, static_cast<float>(ring) / kSphereRings, 0.0f});
    }
  }
  return mesh;
}

Mesh Fence(float length, float height) {
  return Grid(kFenceQuads, 1, 1.0f, 0, [&](int i, int j) {
    return Point3{length * static_cast<float>(i) / kFenceQuads, 0.0f,
                  height * static_cast<float>(j)};
  });
}

Mesh Box(const Point3& size) {
  Mesh mesh;
  for (std::uint32_t corner = 0; corner < 8; ++corner) {
    mesh.verts.push_back({(corner & 1) != 0 ? size.x : 0.0f, (corner & 2) != 0 ? size.y : 0.0f,
                          (corner & 4) != 0 ? size.z : 0.0f});
  }
  constexpr std::array<std::array<std::uint32_t, 4>, 6> kSides{
      {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}}};
  for (const auto& [a, b, c, d] : kSides) {
    mesh.faces.push_back({{a, b, c}, 0, 0});
    mesh.faces.push_back({{a, c, d}, 0, 0});
  }
  return mesh;
}

void JitterBorder(Mesh& mesh, LevelRandom& random) {
  std::map<std::pair<std::uint32_t, std::uint32_t>, int> uses;
  for (const Face& face : mesh.faces) {
    for (std::size_t k = 0; k < 3; ++k) ++uses[std::minmax(face.v[k], face.v[(k + 1) % 3])];
  }
  std::vector<bool> isBorder(mesh.verts.size());
  for (const auto& [edge, count] : uses) {
    if (count == 1) isBorder[edge.first] = isBorder[edge.second] = true;
  }
  const auto jitter = [&] { return kLargestJitter * (2.0f * Unit(random) - 1.0f); };
  for (std::size_t v = 0; v < mesh.verts.size(); ++v) {
    if (!isBorder[v]) continue;
    Point3& p = mesh.verts[v];
    p.x += jitter();
    p.y += jitter();
    p.z += jitter();
  }
}

}  // namespace mapexport
