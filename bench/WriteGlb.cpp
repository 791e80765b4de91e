#include "WriteGlb.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "SplitMesh.h"
#include "YUp.h"

namespace mapexport {
namespace {

static_assert(std::endian::native == std::endian::little);

constexpr int kFloats = 5126;
constexpr int kWords = 5125;

/// The parts of the document that grow with the scene.
class GlbBuilder {
 public:
  explicit GlbBuilder(const Scene& scene) : scene_(scene) {
    for (std::size_t m = 0; m < scene.materials.size(); ++m) AddMaterial(m);
    for (const SceneNode& node : scene.root.children) AddNode(node);
  }

  void Write(std::ostream& out) const {
    std::vector<std::size_t> children(nodes_.size());
    for (std::size_t i = 0; i < children.size(); ++i) children[i] = i + 1;
    std::string json = fmt::format(
        R"({{"asset":{{"version":"2.0"}},"scene":0,"scenes":[{{"nodes":[0]}}],"nodes":[)"
        R"({{"name":"{}","children":[{}]}},{}],"meshes":[{}],"materials":[{}],)"
        R"("textures":[{}],"images":[{}],"accessors":[{}],"bufferViews":[{}],)"
        R"("buffers":[{{"byteLength":{}}}]}})",
        scene_.root.name, fmt::join(children, ","), fmt::join(nodes_, ","), fmt::join(meshes_, ","),
        fmt::join(materials_, ","), fmt::join(textures_, ","), fmt::join(images_, ","),
        fmt::join(accessors_, ","), fmt::join(views_, ","), binary_.size());
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const auto word = [&](std::size_t value) {
      const auto cut = static_cast<std::uint32_t>(value);
      out.write(reinterpret_cast<const char*>(&cut), sizeof cut);
    };
    const auto chunk = [&](std::string_view type, const std::string& bytes) {
      word(bytes.size());
      out << type << bytes;
    };
    out << "glTF";
    word(2);
    word(12 + 8 + json.size() + 8 + binary_.size());
    chunk("JSON", json);
    chunk(std::string_view("BIN\0", 4), binary_);
  }

 private:
  void AddMaterial(std::size_t index) {
    const SceneMaterial& material = scene_.materials[index];
    std::string texture;
    if (material.diffuseMap) {
      texture = fmt::format(R"(,"baseColorTexture":{{"index":{}}})", textures_.size());
      textures_.push_back(fmt::format(R"({{"source":{}}})", images_.size()));
      images_.push_back(fmt::format(R"({{"uri":"{}"}})", material.diffuseMap->file));
    }
    materials_.push_back(fmt::format(
        R"({{"name":"{}","doubleSided":{},"pbrMetallicRoughness":{{"baseColorFactor":[{},{},{},1]{}}}}})",
        material.name, material.twoSided, material.diffuse.r, material.diffuse.g,
        material.diffuse.b, texture));
  }

  void AddNode(const SceneNode& node) {
    const SplitMesh split = MakeSplitMesh(scene_, node);
    std::string attributes = fmt::format(R"("POSITION":{},"NORMAL":{})", AddPoints(split.positions),
                                         AddPoints(split.normals));
    if (!split.uvs.empty()) {
      attributes += fmt::format(R"(,"TEXCOORD_0":{})", AddAccessor(split.uvs, kFloats, "VEC2"));
    }
    std::vector<std::string> primitives;
    for (const auto& [material, corners] : split.triangles) {
      const std::string own = material < 0 ? "" : fmt::format(R"(,"material":{})", material);
      primitives.push_back(fmt::format(R"({{"attributes":{{{}}},"indices":{}{}}})", attributes,
                                       AddAccessor(corners, kWords, "SCALAR"), own));
    }
    meshes_.push_back(fmt::format(R"({{"primitives":[{}]}})", fmt::join(primitives, ",")));

    // The images of the file's axes x, y and z are those of the host's x, z and -y.
    const auto& r = node.objectTransform.rows;
    std::vector<float> matrix;
    for (const Point3& axis : {r[0], r[2], -r[1]}) {
      const Point3 image = YUp(axis);
      matrix.insert(matrix.end(), {image.x, image.y, image.z, 0.0f});
    }
    const Point3 place = YUp(r[3]) * (1.0f / kUnitsPerMetre);
    matrix.insert(matrix.end(), {place.x, place.y, place.z, 1.0f});
    std::string extras;
    if (!node.userProperties.empty()) {
      std::string text = node.userProperties;
      std::erase(text, '\r');
      std::replace(text.begin(), text.end(), '\n', ' ');
      for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        extras +=
            fmt::format(R"({}"{}":true)", begin == 0 ? "" : ",", text.substr(begin, end - begin));
        begin = end + 1;
      }
      extras = fmt::format(R"(,"extras":{{{}}})", extras);
    }
    nodes_.push_back(fmt::format(R"({{"name":"{}","mesh":{},"matrix":[{}]{}}})", node.name,
                                 meshes_.size() - 1, fmt::join(matrix, ","), extras));
  }

  std::size_t AddPoints(const std::vector<Point3>& points) {
    Point3 lo = points.front();
    Point3 hi = lo;
    for (const Point3& p : points) {
      lo = {std::min(lo.x, p.x), std::min(lo.y, p.y), std::min(lo.z, p.z)};
      hi = {std::max(hi.x, p.x), std::max(hi.y, p.y), std::max(hi.z, p.z)};
    }
    return AddAccessor(
        points, kFloats, "VEC3",
        fmt::format(R"(,"min":[{},{},{}],"max":[{},{},{}])", lo.x, lo.y, lo.z, hi.x, hi.y, hi.z));
  }

  template <typename Value>
  std::size_t AddAccessor(const std::vector<Value>& values, int componentType,
                          std::string_view type, const std::string& bounds = "") {
    const std::size_t bytes = values.size() * sizeof(Value);
    accessors_.push_back(
        fmt::format(R"({{"bufferView":{},"componentType":{},"count":{},"type":"{}"{}}})",
                    views_.size(), componentType, values.size(), type, bounds));
    views_.push_back(
        fmt::format(R"({{"buffer":0,"byteOffset":{},"byteLength":{}}})", binary_.size(), bytes));
    binary_.append(reinterpret_cast<const char*>(values.data()), bytes);
    return accessors_.size() - 1;
  }

  const Scene& scene_;
  std::string binary_;
  std::vector<std::string> nodes_;
  std::vector<std::string> meshes_;
  std::vector<std::string> materials_;
  std::vector<std::string> textures_;
  std::vector<std::string> images_;
  std::vector<std::string> accessors_;
  std::vector<std::string> views_;
};

}  // namespace

void WriteGlb(const Scene& scene, std::ostream& out) {
  GlbBuilder(scene).Write(out);
}

}  // namespace mapexport
