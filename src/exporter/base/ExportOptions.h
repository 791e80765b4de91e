// What the person chooses in the options dialog.
#pragma once

#include <cstdint>

#include "host/CStr.h"

namespace mapexport {

/// The export options, in the order in which they are loaded and saved. The values here are those
/// of the first export after the library was loaded; later ones start from what the previous one
/// left.
struct ExportOptions {
  float weldingDistance = 0.2f;
  float tVertexDistance = 1.0f;  ///< shown and kept, read by no step of the export
  bool weldVertices = true;
  bool removeTVertices = false;     ///< shown and kept; while set, welding stays on
  float snapDistance = 1.0f;        ///< shown and kept
  float lightingMultiplier = 1.0f;  ///< shown and kept
  float geometryVoxelSize = 1000.0f;
  bool snapToGrid = false;  ///< shown and kept
  bool cleanVertexAttributes = true;
  std::int32_t coordinateSystem = 0;       ///< 0 to 3; any other value converts nothing
  std::int32_t textureCoordinateMode = 0;  ///< 0 to 3; any other value converts nothing
  CStr cxpFilename = "NONE";
  bool talvernLightFormat = false;  ///< shown, kept while the library stays loaded, never stored
};

}  // namespace mapexport
