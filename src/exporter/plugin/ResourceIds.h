// Ids of the library's own texts, dialogs and cursors.
#pragma once

namespace mapexport {

// Texts.
inline constexpr int kClassNameText = 40216;
inline constexpr int kLongDescText = 40220;
inline constexpr int kShortDescText = 40221;
inline constexpr int kAuthorText = 40222;
inline constexpr int kNoticeText = 40223;
inline constexpr int kCategoryText = 40231;
inline constexpr int kLibDescriptionText = 40232;

// The options dialog and its controls.
inline constexpr int kOptionsDialog = 102;
inline constexpr int kWeldDistanceEdit = 1042;
inline constexpr int kWeldVerticesBox = 1044;
inline constexpr int kRemoveTVerticesBox = 1046;
inline constexpr int kMinTriangleAreaEdit = 1047;
inline constexpr int kSnapToGridBox = 1048;
inline constexpr int kSnapDimensionEdit = 1049;
inline constexpr int kCleanAttributesBox = 1051;
inline constexpr int kTalvernLightFormatBox = 1052;
inline constexpr int kLightingMultiplierEdit = 1056;
inline constexpr int kVoxelSizeEdit = 1058;
inline constexpr int kCoordinateSystemList = 1059;
inline constexpr int kTextureCoordinatesList = 1062;
inline constexpr int kBrowseButton = 1064;
inline constexpr int kCxpFilenameEdit = 1066;

// Cursors that show which clean-up pass runs.
inline constexpr int kWeldCursor = 104;
inline constexpr int kCleanCursor = 109;

}  // namespace mapexport
