// A material as the model file carries it.
#pragma once

#include <cstdint>

#include "exporter/materials/MapRecord.h"
#include "host/Matrix3.h"

namespace mapexport {

/// Red, green, blue and alpha, each usually 0 to 1.
struct ColourRgba {
  float r = 0.0f;
  float g = 0.0f;
  float b = 0.0f;
  float a = 1.0f;  ///< always 1: only r, g and b are ever taken from the host
};

/// One entry of the materials list, made from a host material of the same name.
class MaterialRecord : public MapRecord {
 public:
  MaterialRecord() : MapRecord(kMaterialType, 1) {}

  bool Textured() const { return !(textureName == "NULL"); }

  ColourRgba ambient;
  ColourRgba diffuse;
  ColourRgba specular;
  float scalar1 = 0.0f;        ///< opacity
  float scalar3 = 0.0f;        ///< shininess strength
  float scalar2 = 0.0f;        ///< shininess
  std::int32_t modeValue = 0;  ///< shading mode
  bool twoSided = false;
  CStr textureName;  ///< the bitmap's file name, lower case; "NULL" for an untextured material
  Matrix3 uvTransform;
  /// The texture is in the CXP database as colour-keyed or alpha-blended.
  bool transparent = false;
};

}  // namespace mapexport
