// The options of the commands that read a scene.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "cli/CommandLine.h"
#include "importer/ImportOptions.h"

namespace mapexport {

/// The values of --scale that are words.
inline constexpr std::array kScaleWords{"auto"};

inline constexpr std::array kUpAxes{"auto", "y", "z"};  ///< in the order of UpAxis
inline constexpr OptionInfo kUpOption{
    .name = "up",
    .kind = OptionKind::kText,
    .argument = "AXIS",
    .help =
        "the axis that points up in a foreign scene: auto (what the format or the file says), y "
        "or z",
    .words = kUpAxes};
inline constexpr OptionInfo kSceneScaleOption{
    .name = "scale",
    .kind = OptionKind::kText,
    .argument = "NUMBER",
    .help =
        "host units per unit of a foreign scene: auto (100 for formats in metres, else 1) or a "
        "decimal number above 0",
    .words = kScaleWords};
inline constexpr OptionInfo kReadLimitOption{
    .name = "read-limit",
    .kind = OptionKind::kText,
    .argument = "SECONDS",
    .help =
        "processor time that reading a foreign scene may take; 0: no limit; unless given, 5 s "
        "and 1 s per begun 4 MB of the file, at most 45, and 45 where the data is in other "
        "files (.gltf)"};

/// A scene to load, and how.
struct SceneSource {
  std::string path;
  // For foreign formats only.
  ImportOptions import;
  std::optional<std::uint32_t> seconds;  ///< of processor time; 0: no limit; none: ReadSeconds
};

/// The scene that the first positional names, by the options above. Throws UsageError.
SceneSource SceneOf(const CommandLine& line);

}  // namespace mapexport
