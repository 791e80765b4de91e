// Controls of the exporter's dialog that options of `export` operate. The exporter has its own
// names for the numbers (exporter/plugin/ResourceIds.h), because the sides share only host/.
#pragma once

namespace mapexport {

inline constexpr int kWeldDistanceControl = 1042;        ///< "Weld Distance:"
inline constexpr int kWeldControl = 1044;                ///< "Weld Vertices"
inline constexpr int kRemoveTVerticesControl = 1046;     ///< "Remove T-Vertices"
inline constexpr int kMinTriangleAreaControl = 1047;     ///< "Min Triangle Area:"
inline constexpr int kSnapControl = 1048;                ///< "Snap To Grid"
inline constexpr int kSnapDimensionControl = 1049;       ///< "Snap Dimension:"
inline constexpr int kCleanControl = 1051;               ///< "Clean Vertex Attributes"
inline constexpr int kLightFormatControl = 1052;         ///< "Talvern Light Format"
inline constexpr int kLightingMultiplierControl = 1056;  ///< "Lighting Multiplier:"
inline constexpr int kVoxelSizeControl = 1058;           ///< "Voxel Size:"
inline constexpr int kCoordinatesControl = 1059;         ///< "Export Coordinate System"
inline constexpr int kTextureCoordinatesControl = 1062;  ///< "Texture Coordinates"
inline constexpr int kBrowseControl = 1064;              ///< "Browse"
inline constexpr int kCxpControl = 1066;                 ///< "CXP Filename", which "Browse" fills

}  // namespace mapexport
