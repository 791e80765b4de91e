// Options that several commands have, and the reading of their values.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "cli/CommandLine.h"
#include "importer/ImportOptions.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

inline constexpr OptionInfo kQuietOption{
    .name = "quiet", .kind = OptionKind::kFlag, .help = "print only warnings and errors"};

// For commands that read a scene:

/// The words that --scale accepts.
inline constexpr std::array kScaleWords{"auto"};

inline constexpr std::array kUpAxes{"auto", "y", "z"};  ///< in the order of UpAxis
inline constexpr OptionInfo kUpOption{
    .name = "up",
    .kind = OptionKind::kText,
    .argument = "AXIS",
    .help =
        "the axis that points up in a foreign scene: auto (what the format or the file says), y "
        "or z",
    .words = kUpAxes,
    .shapesOutput = true,
    .defaultValue = "auto"};
inline constexpr OptionInfo kSceneScaleOption{
    .name = "scale",
    .kind = OptionKind::kText,
    .argument = "NUMBER",
    .help =
        "host units per unit of a foreign scene: auto (100 for formats and FBX files in metres, "
        "else 1) or a decimal number above 0",
    .words = kScaleWords,
    .shapesOutput = true,
    .defaultValue = "auto"};
inline constexpr std::array kHiddenChoices{"keep", "skip"};
inline constexpr OptionInfo kHiddenOption{
    .name = "hidden",
    .kind = OptionKind::kText,
    .argument = "CHOICE",
    .help = "nodes that a foreign scene hides (FBX, glTF): keep (the default) or skip",
    .words = kHiddenChoices,
    .shapesOutput = true,
    .defaultValue = "keep"};
inline constexpr OptionInfo kReadLimitOption{
    .name = "read-limit",
    .kind = OptionKind::kText,
    .argument = "SECONDS",
    .help =
        "processor time that reading a foreign scene may take; 0: no limit; unless given, 5 s "
        "and 1 s per begun 4 MB of the file, at most 45, and 45 where the data is in other "
        "files (.gltf)"};

inline constexpr OptionInfo kKeywordsOption{
    .name = "keywords",
    .kind = OptionKind::kText,
    .argument = "FILE",
    .help =
        "keywords for nodes by name, for every format: lines \"PATTERN: keyword, keyword\" with "
        "shell patterns (\"Floor*: floorface\")",
    .shapesOutput = true};
inline constexpr OptionInfo kOneSidedOption{
    .name = "one-sided",
    .kind = OptionKind::kFlag,
    .help = "no material counts as two-sided, so that no triangle is doubled",
    .shapesOutput = true};

/// A scene to load, and options for it.
struct SceneSource {
  std::string path;
  std::optional<std::string> keywords;  ///< path of a keyword file
  bool oneSided = false;                ///< no material counts as two-sided
  // For foreign formats only.
  ImportOptions import;
  std::optional<std::uint32_t> seconds;  ///< of processor time; 0: no limit; empty: ReadSeconds
};

/// The scene of the first positional, with the options above. Throws UsageError.
SceneSource SceneOf(const CommandLine& line);

// For commands that read a model file:

inline constexpr PositionalInfo kModelPositional{"FILE",
                                                 "a model file; its extension chooses the layout"};

inline constexpr std::array kLayouts{"qob", "kob"};
inline constexpr OptionInfo kLayoutOption{.name = "layout",
                                          .kind = OptionKind::kText,
                                          .argument = "LAYOUT",
                                          .help = "qob or kob; overrides the extension",
                                          .words = kLayouts};

/// The folders of images that a command shows.
inline constexpr OptionInfo kTexturesOption{
    .name = "textures",
    .kind = OptionKind::kText,
    .argument = "DIR",
    .help =
        "look for each texture in this folder, as export --textures does; can be repeated; PNG, "
        "JPEG, BMP, TGA and DDS are read",
    .repeats = true};

/// The layout that --layout names; nothing when it is not given. Throws UsageError.
std::optional<ModelLayout> LayoutValue(const CommandLine& line);

// The rows of the options dialog's list boxes.
inline constexpr std::array kCoordinateSystems{"left-handed", "right-handed", "max", "inverse-max"};
inline constexpr std::array kTextureModes{"invert-y", "invert-x", "invert-xy", "max"};

}  // namespace mapexport
