#include "exporter/plugin/Resources.h"

#include <array>
#include <string_view>

#include "exporter/plugin/ResourceIds.h"
#include "host/System.h"

namespace mapexport {
namespace {

constexpr std::array<StringResource, 7> kStrings{{
    {kClassNameText, "OsprinMapExport"},
    {kLongDescText, "Osprin MAX Map Export File"},
    {kShortDescText, "Osprin Map Export File"},
    {kAuthorText, "Osprin tools group"},
    {kNoticeText, "All rights reserved by their owners."},
    {kCategoryText, "Map Export"},
    {kLibDescriptionText, ".MAP Osprin Max File Export DLL - Version 1.0"},
}};

constexpr std::array<DialogControl, 24> kOptionsControls{{
    {kWeldVerticesBox, ControlKind::kCheckBox, "Weld Vertices", 20, 15, 60, 10},
    {1043, ControlKind::kLabel, "Weld Distance:", 147, 15, 50, 8},
    {kWeldDistanceEdit, ControlKind::kEdit, "", 210, 15, 40, 12},
    {kRemoveTVerticesBox, ControlKind::kCheckBox, "Remove T-Vertices", 20, 36, 77, 10},
    {-1, ControlKind::kLabel, "Min Triangle Area:", 147, 36, 58, 8},
    {kMinTriangleAreaEdit, ControlKind::kEdit, "", 210, 36, 40, 12},
    {kSnapToGridBox, ControlKind::kCheckBox, "Snap To Grid", 20, 58, 58, 10},
    {1050, ControlKind::kLabel, "Snap Dimension:", 147, 58, 54, 8},
    {kSnapDimensionEdit, ControlKind::kEdit, "", 210, 58, 40, 12},
    {kCleanAttributesBox, ControlKind::kCheckBox, "Clean Vertex Attributes", 20, 80, 87, 10},
    {1055, ControlKind::kLabel, "Lighting Multiplier:", 147, 80, 57, 8},
    {kLightingMultiplierEdit, ControlKind::kEdit, "", 210, 80, 40, 12},
    {kTalvernLightFormatBox, ControlKind::kCheckBox, "Talvern Light Format", 20, 102, 85, 10},
    {1057, ControlKind::kLabel, "Voxel Size:", 147, 102, 36, 8},
    {kVoxelSizeEdit, ControlKind::kEdit, "", 210, 102, 40, 12},
    {1065, ControlKind::kLabel, "CXP Filename", 20, 123, 45, 8},
    {kCxpFilenameEdit, ControlKind::kReadOnlyEdit, "", 20, 133, 175, 14},
    {kBrowseButton, ControlKind::kButton, "Browse", 210, 133, 39, 14},
    {1061, ControlKind::kLabel, "Export Coordinate System", 20, 154, 82, 8},
    {kCoordinateSystemList, ControlKind::kListBox, "", 20, 167, 112, 35},
    {1060, ControlKind::kLabel, "Texture Coordinates", 147, 154, 64, 8},
    {kTextureCoordinatesList, ControlKind::kListBox, "", 147, 167, 117, 36},
    {IDOK, ControlKind::kDefaultButton, "OK", 147, 213, 50, 14},
    {IDCANCEL, ControlKind::kButton, "Cancel", 222, 213, 50, 14},
}};

constexpr std::array<DialogTemplate, 1> kDialogs{{
    {kOptionsDialog, "MAP Export Options", 279, 234, kOptionsControls},
}};

// Two vertices move into one.
constexpr std::array<std::string_view, 32> kWeldImage{
    "................................", "................................",
    "................................", "................................",
    "................................", "................................",
    "................................", "................................",
    "................................", "................................",
    "....ooo..................ooo....", "....oXoo.....oooooo.....ooXo....",
    "....oXXoo...ooXXXXoo...ooXXo....", "....oXXXoo.ooXXXXXXoo.ooXXXo....",
    "oooooXXXXoooXXXXXXXXoooXXXXooooo", "oXXXXXXXXXooXXXXXXXXooXXXXXXXXXo",
    "oXXXXXXXXXooXXXXXXXXooXXXXXXXXXo", "oooooXXXXoooXXXXXXXXoooXXXXooooo",
    "....oXXXoo.ooXXXXXXoo.ooXXXo....", "....oXXoo...ooXXXXoo...ooXXo....",
    "....oXoo.....oooooo.....ooXo....", "....ooo..................ooo....",
    "................................", "................................",
    "................................", "................................",
    "................................", "................................",
    "................................", "................................",
    "................................", "................................",
};

// A broom and some dust.
constexpr std::array<std::string_view, 32> kCleanImage{
    "................................", ".........................ooo....",
    "........................ooXoo...", ".......................ooXXXoo..",
    "......................ooXXXXXo..", ".....................ooXXXXXXo..",
    "....................ooXXXXXXoo..", "...................ooXXXXXXoo...",
    "..................ooXXXXXXoo....", ".................ooXXXXXXoo.....",
    "................ooXXXXXXoo......", ".............ooooXXXXXXoo.......",
    "............ooXoXXXXXXoo........", "............oXXXXXXXXoo.........",
    "........ooooooXXXXXXoo..........", ".....ooooXXXXooXXXXoo...........",
    "...oooXXXXXXXXooXXXoo...........", "..ooXXXXXXooXXXooXXXo...........",
    ".ooXXXXXXooXXXXXooXoo...........", ".oXXXXXXooXXooXXXooo............",
    ".ooXXXoooXXooXooXo..............", "..ooXooXXXooXXoXXo..............",
    "...oooXXXooXXooXXo..............", "....ooXXooXXXoXXoo......oooo....",
    ".....ooXoXXXoXXXo.......oXXo....", "......oooXXooXXXo.......oXXo....",
    ".......ooXXoXXXoo...oooooooo....", "........ooooXXoo....oXXo..oooo..",
    ".........ooXXXo.....oXXo..oXXo..", "..........ooXoo.....oooo..oXXo..",
    "...........ooo............oooo..", "................................",
};

constexpr std::array<CursorImage, 2> kCursors{{
    {kWeldCursor, 15, 15, kWeldImage},
    {kCleanCursor, 10, 26, kCleanImage},
}};

}  // namespace

const ModuleResources kResources{kStrings, kDialogs, kCursors};

}  // namespace mapexport
