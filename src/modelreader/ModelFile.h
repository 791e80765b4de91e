// Everything that a model file holds, as plain values.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <mapexport/ModelReader.h>

namespace mapexport {

using ModelLayout = reader::Layout;
using ModelPoint = reader::Point;
using ModelPlane = reader::Plane;
using ModelColour = reader::Colour;
using ModelFace = reader::Face;

inline constexpr std::uint64_t kModelIndexLimit = reader::kIndexLimit;

/// What every record begins with.
struct ModelHeader {
  std::uint32_t typeCode = 0;
  std::uint32_t version = 0;
  std::string name;  ///< bytes as they are in the file, without a NUL; any encoding
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
