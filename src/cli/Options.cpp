#include "cli/Options.h"

#include <array>

namespace mapexport {
namespace {

using enum OptionKind;

constexpr std::array kCoordinates{"left-handed", "right-handed", "max", "inverse-max"};
constexpr std::array kTextureCoordinates{"invert-y", "invert-x", "invert-xy", "max"};

constexpr std::array kUpAxes{"auto", "y", "z"};
constexpr std::array kAuto{"auto"};
constexpr std::array kLayouts{"qob", "kob"};
constexpr std::array kTargets{"glb", "gltf", "obj", "ply", "stl"};

constexpr std::array kProgramOptions{
    OptionInfo{.name = "help", .kind = kFlag, .help = "print this help and end", .letter = 'h'},
    OptionInfo{.name = "version", .kind = kFlag, .help = "print the version and end"},
};

// Of `export` and `scene`.
constexpr OptionInfo kUp{
    .name = "up",
    .kind = kText,
    .argument = "AXIS",
    .help =
        "the axis that points up in a foreign scene: auto (what the format or the "
        "file says), y or z",
    .words = kUpAxes};
constexpr OptionInfo kScale{.name = "scale",
                            .kind = kText,
                            .argument = "NUMBER",
                            .help =
                                "host units per unit of a foreign scene: auto (100 for formats in "
                                "metres, else 1) or a decimal number above 0",
                            .words = kAuto};
constexpr OptionInfo kReadLimit{
    .name = "read-limit",
    .kind = kText,
    .argument = "SECONDS",
    .help =
        "processor time that reading a foreign scene may take; 0: no "
        "limit; unless given, 5 s and 1 s per begun 4 MB of the file, at "
        "most 45, and 45 where the data is in other files (.gltf)"};

constexpr std::array kExportPositionals{
    PositionalInfo{"SCENE", "a .scene.json, or FBX, glTF, OBJ, 3DS, ASE, DAE and more"},
    PositionalInfo{"OUTPUT",
                   "the model file; \".qob\" gets the first layout, every other extension the "
                   "second; without one, \".map\" is appended"},
};
constexpr std::array kExportOptions{
    OptionInfo{
        .name = "weld", .kind = kSwitch, .help = "\"Weld Vertices\"", .control = kWeldControl},
    OptionInfo{.name = "weld-distance",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Weld Distance:\"",
               .control = kWeldDistanceControl},
    OptionInfo{.name = "remove-t-vertices",
               .kind = kSwitch,
               .help = "\"Remove T-Vertices\"; while it is set, welding can't be switched off",
               .control = kRemoveTVerticesControl},
    OptionInfo{.name = "min-triangle-area",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Min Triangle Area:\"",
               .control = kMinTriangleAreaControl},
    OptionInfo{
        .name = "snap", .kind = kSwitch, .help = "\"Snap To Grid\"", .control = kSnapControl},
    OptionInfo{.name = "snap-dimension",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Snap Dimension:\"",
               .control = kSnapDimensionControl},
    OptionInfo{.name = "clean",
               .kind = kSwitch,
               .help = "\"Clean Vertex Attributes\"",
               .control = kCleanControl},
    OptionInfo{.name = "lighting-multiplier",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Lighting Multiplier:\"",
               .control = kLightingMultiplierControl},
    OptionInfo{.name = "talvern-light-format",
               .kind = kSwitch,
               .help = "\"Talvern Light Format\"",
               .control = kLightFormatControl},
    OptionInfo{.name = "voxel-size",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Voxel Size:\"",
               .control = kVoxelSizeControl},
    OptionInfo{
        .name = "cxp",
        .kind = kText,
        .argument = "FILE",
        .help = "\"CXP Filename\", as if picked with Browse; relative to the current directory",
        .control = kBrowseControl},
    OptionInfo{.name = "coordinates",
               .kind = kRow,
               .argument = "SYSTEM",
               .help = "\"Export Coordinate System\"",
               .control = kCoordinatesControl,
               .rows = kCoordinates},
    OptionInfo{.name = "texture-coordinates",
               .kind = kRow,
               .argument = "MODE",
               .help = "\"Texture Coordinates\"",
               .control = kTextureCoordinatesControl,
               .rows = kTextureCoordinates},
    OptionInfo{
        .name = "dialog",
        .kind = kFlag,
        .help = "show the options dialog in a window: the controls given above are set first, then "
                "the person decides"},
    OptionInfo{
        .name = "settings",
        .kind = kText,
        .argument = "FILE",
        .help = "the settings store to use instead of the user's own; it need not exist yet"},
    OptionInfo{.name = "fresh",
               .kind = kFlag,
               .help = "start from the initial values and save nothing; a store named by "
                       "--settings is not used"},
    OptionInfo{.name = "seed",
               .kind = kText,
               .argument = "N",
               .help = "0 to 4294967295: the same scene, options and seed give the same bytes"},
    kUp,
    kScale,
    kReadLimit,
    OptionInfo{.name = "depfile",
               .kind = kText,
               .argument = "FILE",
               .help = "write a make rule that names every file the output depends on"},
    OptionInfo{
        .name = "report",
        .kind = kText,
        .argument = "FILE",
        .help =
            "write a JSON report: counts, warnings, times, SHA-256; also when the export fails; "
            "\"-\": to standard output"},
    OptionInfo{
        .name = "log",
        .kind = kText,
        .argument = "FILE",
        .help =
            "where the exporter's log goes instead of ExportDebug.txt in the current directory"},
    OptionInfo{.name = "no-log", .kind = kFlag, .help = "write no log"},
    OptionInfo{.name = "quiet", .kind = kFlag, .help = "print only warnings and errors"},
};

constexpr std::array kScenePositionals{
    PositionalInfo{"SCENE", "a scene, in any format that `export` reads"},
};
constexpr std::array kSceneOptions{
    OptionInfo{.name = "output",
               .kind = kText,
               .argument = "FILE",
               .help = "the .scene.json to write instead of standard output (\"-\")",
               .letter = 'o'},
    kUp,
    kScale,
    kReadLimit,
};

// Of the commands that read a model file.
constexpr std::array kModelPositionals{
    PositionalInfo{"FILE", "a model file; its extension tells the layout"},
};
constexpr OptionInfo kLayout{.name = "layout",
                             .kind = kText,
                             .argument = "LAYOUT",
                             .help = "qob or kob, whatever the extension is",
                             .words = kLayouts};

constexpr std::array kInspectOptions{
    OptionInfo{.name = "json", .kind = kFlag, .help = "print one JSON document"},
    OptionInfo{
        .name = "summary", .kind = kFlag, .help = "leave the long lists out and give their counts"},
    kLayout,
};

constexpr std::array kViewOptions{
    OptionInfo{
        .name = "output",
        .kind = kText,
        .argument = "FILE",
        .help =
            "the page to write; without it, FILE.html beside the model file; \"-\": to standard "
            "output",
        .letter = 'o'},
    kLayout,
    OptionInfo{
        .name = "coordinates",
        .kind = kRow,
        .argument = "SYSTEM",
        .help = "the coordinate system that the file was exported with, left-handed unless given; "
                "the page stands the level upright by it",
        .rows = kCoordinates},
};

constexpr std::array kConvertPositionals{
    PositionalInfo{"FILE", "a model file; its extension tells the layout"},
    PositionalInfo{"OUT",
                   "the file to write; its extension tells the format: .glb, .gltf (and a "
                   ".bin), .obj (and a .mtl), .ply or .stl; \"-\": standard output, with --to"},
};
constexpr std::array kConvertOptions{
    OptionInfo{
        .name = "to",
        .kind = kText,
        .argument = "FORMAT",
        .help = "glb, gltf, obj, ply or stl, whatever the extension is; gltf can't go to standard "
                "output, obj goes there without its materials",
        .words = kTargets},
    OptionInfo{.name = "coordinates",
               .kind = kRow,
               .argument = "SYSTEM",
               .help = "the coordinate system that FILE was exported with, 0 unless given",
               .rows = kCoordinates},
    OptionInfo{.name = "texture-coordinates",
               .kind = kRow,
               .argument = "MODE",
               .help = "the texture coordinates that FILE was exported with, 0 unless given",
               .rows = kTextureCoordinates},
    OptionInfo{
        .name = "scale",
        .kind = kText,
        .argument = "NUMBER",
        .help =
            "units of FILE per unit of OUT: auto (100 for formats in metres, else 1) or a decimal "
            "number above 0",
        .words = kAuto},
    kLayout,
    OptionInfo{.name = "quiet", .kind = kFlag, .help = "print only warnings and errors"},
};

constexpr std::array kCommands{
    CommandInfo{.command = Command::kExport,
                .name = "export",
                .summary = "exports a scene to a model file",
                .positionals = kExportPositionals,
                .options = kExportOptions},
    CommandInfo{.command = Command::kScene,
                .name = "scene",
                .summary = "writes a scene as the exporter will see it",
                .positionals = kScenePositionals,
                .options = kSceneOptions},
    CommandInfo{.command = Command::kInspect,
                .name = "inspect",
                .summary = "checks a model file and prints what it holds",
                .positionals = kModelPositionals,
                .options = kInspectOptions},
    CommandInfo{.command = Command::kConvert,
                .name = "convert",
                .summary = "turns a model file into a format that viewers open",
                .positionals = kConvertPositionals,
                .options = kConvertOptions},
    CommandInfo{.command = Command::kView,
                .name = "view",
                .summary = "writes an HTML page that shows a model file in 3D",
                .positionals = kModelPositionals,
                .options = kViewOptions},
    CommandInfo{.command = Command::kFormats,
                .name = "formats",
                .summary = "lists the formats that scenes are read from"},
};

constexpr std::array kExitStatuses{
    ExitStatusInfo{ExitStatus::kDone, "done"},
    ExitStatusInfo{ExitStatus::kFailed,
                   "the input could not be read or the output not be written; an older output is "
                   "untouched"},
    ExitStatusInfo{ExitStatus::kWrongUsage, "the command line is wrong"},
    ExitStatusInfo{ExitStatus::kCancelled, "the export was cancelled in the dialog"},
    ExitStatusInfo{ExitStatus::kOverlongLists,
                   "done, but a list is longer than the file's 16-bit indices can address"},
};

}  // namespace

std::span<const CommandInfo> Commands() {
  return kCommands;
}

std::span<const OptionInfo> ProgramOptions() {
  return kProgramOptions;
}

std::span<const ExitStatusInfo> ExitStatuses() {
  return kExitStatuses;
}

}  // namespace mapexport
