// Everything that a model file holds, as plain values.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace mapexport {

/// The two layouts of a group record. Nothing in a file tells which of them it has.
enum class ModelLayout {
  kQob,  ///< group records of type code 3
  kKob   ///< group records of type code 35, each around one of type code 3
};

/// Indices into lists stand in the file as 16 bits: of a list with more entries than this, the
/// index of a later entry is cut to its low 16 bits.
inline constexpr std::uint64_t kModelIndexLimit = 65536;

struct ModelPoint {
  float x = 0;
  float y = 0;
  float z = 0;
};

struct ModelPlane {
  ModelPoint normal;
  float d = 0;
};

struct ModelColour {
  float r = 0;
  float g = 0;
  float b = 0;
  float a = 0;
};

/// What every record begins with.
struct ModelHeader {
  std::uint32_t typeCode = 0;
  std::uint32_t version = 0;
  std::string name;  ///< bytes as they stand in the file, without a NUL; any encoding
};

struct ModelMaterial {
  ModelHeader header;
  std::string textureName;  ///< "NULL" without a texture
  float scalar1 = 0;
  float scalar2 = 0;
  float scalar3 = 0;
  std::int32_t modeValue = 0;
  ModelColour ambient;
  ModelColour diffuse;
  ModelColour specular;
  bool twoSided = false;
};

/// One triangle of a batch.
struct ModelBatchFace {
  ModelPlane plane;
  std::array<std::uint16_t, 3> vertices{};  ///< into the group's vertices
  std::array<std::uint16_t, 3> corners{};   ///< into the batch's corners
};

struct ModelCorner {
  ModelPoint normal;
  float u = 0;
  float v = 0;
  ModelColour colour;
};

struct ModelBatch {
  std::int32_t material = -1;  ///< into the file's materials, -1 for none
  std::vector<ModelBatchFace> faces;
  std::vector<ModelCorner> corners;
};

/// One triangle of a group's face table.
struct ModelFace {
  /// Into the group's vertices for a drawn face, into its collision points for an undrawn one.
  std::array<std::uint16_t, 3> vertices{};
  /// Place in the batch's faces for a drawn face, in the group's planes for an undrawn one.
  std::uint16_t position = 0;
  std::uint32_t surfaceSet = 0;  ///< into the group's surfaceSets
  std::int32_t batch = -1;       ///< into the group's batches; -1: the face is not drawn
};

struct ModelSurfaceSet {
  std::string name;
  std::uint32_t flags = 0;
  std::vector<std::uint16_t> faces;  ///< into the group's faces
};

struct ModelGroup {
  ModelHeader header;
  std::vector<ModelPoint> vertices;
  std::vector<ModelBatch> batches;

  // Only in the layout kKob; empty in the other.
  ModelHeader outerHeader;
  std::vector<ModelPoint> collisionPoints;
  std::vector<ModelPlane> planes;
  std::vector<ModelFace> faces;
  std::vector<ModelSurfaceSet> surfaceSets;
};

struct ModelFile {
  ModelLayout layout = ModelLayout::kKob;
  std::vector<ModelMaterial> materials;
  std::vector<ModelGroup> groups;
};

}  // namespace mapexport
