// What the JSON of a glTF file says, in its own numbers: indices, not yet contents.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "importer/rebuild/AffineMatrix.h"
#include "importer/text/UserText.h"

namespace mapexport {

inline constexpr int kNoGltfIndex = -1;
/// A size that must be given and isn't; CheckGltfDocument refuses it.
inline constexpr std::size_t kNoGltfSize = std::numeric_limits<std::size_t>::max();

/// KHR_texture_transform.
struct GltfTextureTransform {
  std::array<float, 2> offset{};
  float rotation = 0;  ///< radians
  std::array<float, 2> scale{1, 1};
};

struct GltfTextureUse {
  int texture = kNoGltfIndex;
  int set = 0;  ///< of texture coordinates
  std::optional<GltfTextureTransform> transform;
};

/// KHR_materials_pbrSpecularGlossiness.
struct GltfSpecularGlossiness {
  std::array<float, 4> diffuse{1, 1, 1, 1};
  std::array<float, 3> specular{1, 1, 1};
  float glossiness = 1;
  GltfTextureUse diffuseTexture;
};

struct GltfMaterial {
  enum class Alpha { kOpaque, kMask, kBlend };
  std::string name;
  std::array<float, 4> baseColor{1, 1, 1, 1};
  GltfTextureUse baseColorTexture;
  float roughness = 1;
  std::array<float, 3> emissive{};
  GltfTextureUse emissiveTexture;
  Alpha alpha = Alpha::kOpaque;
  float alphaCutoff = 0.5f;  ///< what Alpha::kMask shows begins there
  bool doubleSided = false;
  bool isUnlit = false;
  std::optional<GltfSpecularGlossiness> specularGlossiness;
};

struct GltfImage {
  std::string name;
  std::string uri;          ///< empty when the image is in the file
  std::string_view ending;  ///< of its kind of file: "png", "jpg", ...
  bool isInFile = false;
  std::size_t number = 0;  ///< among those in the file
};

/// An attribute's name and its accessor, or its id in a Draco stream.
struct GltfAttribute {
  std::string name;
  int index = kNoGltfIndex;
};
using GltfAttributes = std::vector<GltfAttribute>;

struct GltfDraco {
  int bufferView = kNoGltfIndex;
  GltfAttributes attributes;
};

struct GltfPrimitive {
  GltfAttributes attributes;
  int indices = kNoGltfIndex;
  int material = kNoGltfIndex;
  int mode = 4;
  std::vector<GltfAttributes> targets;
  std::optional<GltfDraco> draco;
};

struct GltfMesh {
  std::vector<GltfPrimitive> primitives;
  std::vector<float> weights;
  UserText extras;
};

struct GltfNode {
  std::string name;
  AffineMatrix local;
  int mesh = kNoGltfIndex;
  int skin = kNoGltfIndex;
  int parent = kNoGltfIndex;  ///< set by CheckGltfDocument
  bool isHidden = false;      ///< KHR_node_visibility
  std::vector<int> children;
  std::vector<float> weights;
  GltfAttributes instancing;  ///< EXT_mesh_gpu_instancing
  UserText extras;
};

struct GltfSkin {
  int inverseBindMatrices = kNoGltfIndex;
  std::vector<int> joints;
};

struct GltfSparse {
  std::size_t count = 0;
  int indexView = kNoGltfIndex;
  std::size_t indexOffset = 0;
  int indexType = 0;
  int valueView = kNoGltfIndex;
  std::size_t valueOffset = 0;
};

struct GltfAccessor {
  int bufferView = kNoGltfIndex;
  std::size_t byteOffset = 0;
  int componentType = 0;
  bool isNormalized = false;
  std::size_t count = kNoGltfSize;
  std::string type;
  std::optional<GltfSparse> sparse;
};

/// EXT_meshopt_compression.
struct GltfMeshopt {
  enum class Mode { kAttributes, kTriangles, kIndices };
  enum class Filter { kNone, kOctahedral, kQuaternion, kExponential };
  int buffer = kNoGltfIndex;
  std::size_t byteOffset = 0;
  std::size_t byteLength = 0;
  std::size_t byteStride = 0;
  std::size_t count = 0;
  Mode mode = Mode::kAttributes;
  Filter filter = Filter::kNone;
};

struct GltfBufferView {
  int buffer = kNoGltfIndex;
  std::size_t byteOffset = 0;
  std::size_t byteLength = kNoGltfSize;
  std::size_t byteStride = 0;  ///< 0: elements follow each other
  std::optional<GltfMeshopt> meshopt;
};

struct GltfBuffer {
  std::optional<std::string> uri;  ///< empty: the binary chunk of a .glb
  std::size_t byteLength = kNoGltfSize;
};

struct GltfDocument {
  std::string version;
  std::string minVersion;
  std::vector<std::string> extensionsRequired;
  int scene = kNoGltfIndex;
  std::vector<std::vector<int>> scenes;  ///< their root nodes
  std::vector<GltfNode> nodes;
  std::vector<GltfMesh> meshes;
  std::vector<GltfSkin> skins;
  std::vector<GltfMaterial> materials;
  std::vector<int> textures;  ///< each one's image
  std::vector<GltfImage> images;
  std::vector<GltfAccessor> accessors;
  std::vector<GltfBufferView> bufferViews;
  std::vector<GltfBuffer> buffers;
  std::size_t cameras = 0;
  std::size_t lights = 0;
  std::size_t animations = 0;
  std::size_t variants = 0;
};

}  // namespace mapexport
