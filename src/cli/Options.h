// The commands of mapexport and their options: the one table that the parser and --help, and
// whatever else tells of the command line, are made from.
#pragma once

#include <span>

#include "cli/ExitStatus.h"

namespace mapexport {

enum class OptionKind {
  kFlag,    ///< "--name"
  kSwitch,  ///< "--name" or "--no-name"
  kNumber,  ///< "--name X", a decimal number in the range of a 32-bit float
  kRow,     ///< "--name ROW", a row of a list box by its number or its name
  kText     ///< "--name TEXT"
};

struct OptionInfo {
  const char* name;  ///< without dashes
  OptionKind kind;
  const char* argument = nullptr;  ///< what the value is called; null for flags and switches
  const char* help;
  char letter = '\0';  ///< "-l" for short
  /// The control of the options dialog that the option operates, 0 for none.
  int control = 0;
  std::span<const char* const> rows = {};   ///< names of a kRow's rows
  std::span<const char* const> words = {};  ///< of a kText: values that are words, all or some
};

struct PositionalInfo {
  const char* name;
  const char* help;
};

enum class Command { kExport, kScene, kInspect, kConvert, kView, kFormats };

struct CommandInfo {
  Command command;
  const char* name;
  const char* summary;
  std::span<const PositionalInfo> positionals = {};  ///< each is required
  /// Those that operate controls stand in the order of the dialog's control table.
  std::span<const OptionInfo> options = {};
};

/// Every command, in the order in which they are listed.
std::span<const CommandInfo> Commands();

/// Options of the program itself; "help" is an option of every command too.
std::span<const OptionInfo> ProgramOptions();

struct ExitStatusInfo {
  ExitStatus status;
  const char* meaning;
};

/// Every exit status, in the order of the numbers.
std::span<const ExitStatusInfo> ExitStatuses();

// Controls of the exporter's dialog. The exporter has its own names for the numbers
// (exporter/plugin/ResourceIds.h): the sides share nothing but host/.
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
