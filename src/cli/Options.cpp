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
    OptionInfo{"help", kFlag, nullptr, "print this help and end", 'h'},
    OptionInfo{"version", kFlag, nullptr, "print the version and end"},
};

// Of `export` and `scene`.
constexpr OptionInfo kUp{"up",
                         kText,
                         "AXIS",
                         "the axis that points up in a foreign scene: auto (what the format or the "
                         "file says), y or z",
                         '\0',
                         0,
                         {},
                         kUpAxes};
constexpr OptionInfo kScale{"scale",
                            kText,
                            "NUMBER",
                            "host units per unit of a foreign scene: auto (100 for formats in "
                            "metres, else 1) or a decimal number above 0",
                            '\0',
                            0,
                            {},
                            kAuto};
constexpr OptionInfo kReadLimit{"read-limit", kText, "SECONDS",
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
    OptionInfo{"weld", kSwitch, nullptr, "\"Weld Vertices\"", '\0', kWeldControl},
    OptionInfo{"weld-distance", kNumber, "X", "\"Weld Distance:\"", '\0', kWeldDistanceControl},
    OptionInfo{"remove-t-vertices", kSwitch, nullptr,
               "\"Remove T-Vertices\"; while it is set, welding can't be switched off", '\0',
               kRemoveTVerticesControl},
    OptionInfo{"min-triangle-area", kNumber, "X", "\"Min Triangle Area:\"", '\0',
               kMinTriangleAreaControl},
    OptionInfo{"snap", kSwitch, nullptr, "\"Snap To Grid\"", '\0', kSnapControl},
    OptionInfo{"snap-dimension", kNumber, "X", "\"Snap Dimension:\"", '\0', kSnapDimensionControl},
    OptionInfo{"clean", kSwitch, nullptr, "\"Clean Vertex Attributes\"", '\0', kCleanControl},
    OptionInfo{"lighting-multiplier", kNumber, "X", "\"Lighting Multiplier:\"", '\0',
               kLightingMultiplierControl},
    OptionInfo{"talvern-light-format", kSwitch, nullptr, "\"Talvern Light Format\"", '\0',
               kLightFormatControl},
    OptionInfo{"voxel-size", kNumber, "X", "\"Voxel Size:\"", '\0', kVoxelSizeControl},
    OptionInfo{"cxp", kText, "FILE",
               "\"CXP Filename\", as if picked with Browse; relative to the current directory",
               '\0', kBrowseControl},
    OptionInfo{"coordinates", kRow, "SYSTEM", "\"Export Coordinate System\"", '\0',
               kCoordinatesControl, kCoordinates},
    OptionInfo{"texture-coordinates", kRow, "MODE", "\"Texture Coordinates\"", '\0',
               kTextureCoordinatesControl, kTextureCoordinates},
    OptionInfo{"dialog", kFlag, nullptr,
               "show the options dialog in a window: the controls given above are set first, then "
               "the person decides"},
    OptionInfo{"settings", kText, "FILE",
               "the settings store to use instead of the user's own; it need not exist yet"},
    OptionInfo{
        "fresh", kFlag, nullptr,
        "start from the initial values and save nothing; a store named by --settings is not used"},
    OptionInfo{"seed", kText, "N",
               "0 to 4294967295: the same scene, options and seed give the same bytes"},
    kUp,
    kScale,
    kReadLimit,
    OptionInfo{"depfile", kText, "FILE",
               "write a make rule that names every file the output depends on"},
    OptionInfo{"report", kText, "FILE",
               "write a JSON report: counts, warnings, times, SHA-256; also when the export fails; "
               "\"-\": to standard output"},
    OptionInfo{"log", kText, "FILE",
               "where the exporter's log goes instead of ExportDebug.txt in the current directory"},
    OptionInfo{"no-log", kFlag, nullptr, "write no log"},
    OptionInfo{"quiet", kFlag, nullptr, "print only warnings and errors"},
};

constexpr std::array kScenePositionals{
    PositionalInfo{"SCENE", "a scene, in any format that `export` reads"},
};
constexpr std::array kSceneOptions{
    OptionInfo{"output", kText, "FILE",
               "the .scene.json to write instead of standard output (\"-\")", 'o'},
    kUp,
    kScale,
    kReadLimit,
};

// Of the commands that read a model file.
constexpr std::array kModelPositionals{
    PositionalInfo{"FILE", "a model file; its extension tells the layout"},
};
constexpr OptionInfo kLayout{"layout", kText, "LAYOUT", "qob or kob, whatever the extension is",
                             '\0',     0,     {},       kLayouts};

constexpr std::array kInspectOptions{
    OptionInfo{"json", kFlag, nullptr, "print one JSON document"},
    OptionInfo{"summary", kFlag, nullptr, "leave the long lists out and give their counts"},
    kLayout,
};

constexpr std::array kViewOptions{
    OptionInfo{"output", kText, "FILE",
               "the page to write; without it, FILE.html beside the model file; \"-\": to standard "
               "output",
               'o'},
    kLayout,
    OptionInfo{"coordinates", kRow, "SYSTEM",
               "the coordinate system that the file was exported with, left-handed unless given; "
               "the page stands the level upright by it",
               '\0', 0, kCoordinates},
};

constexpr std::array kConvertPositionals{
    PositionalInfo{"FILE", "a model file; its extension tells the layout"},
    PositionalInfo{"OUT",
                   "the file to write; its extension tells the format: .glb, .gltf (and a "
                   ".bin), .obj (and a .mtl), .ply or .stl; \"-\": standard output, with --to"},
};
constexpr std::array kConvertOptions{
    OptionInfo{"to",
               kText,
               "FORMAT",
               "glb, gltf, obj, ply or stl, whatever the extension is; gltf can't go to standard "
               "output, obj goes there without its materials",
               '\0',
               0,
               {},
               kTargets},
    OptionInfo{"coordinates", kRow, "SYSTEM",
               "the coordinate system that FILE was exported with, 0 unless given", '\0', 0,
               kCoordinates},
    OptionInfo{"texture-coordinates", kRow, "MODE",
               "the texture coordinates that FILE was exported with, 0 unless given", '\0', 0,
               kTextureCoordinates},
    OptionInfo{
        "scale",
        kText,
        "NUMBER",
        "units of FILE per unit of OUT: auto (100 for formats in metres, else 1) or a decimal "
        "number above 0",
        '\0',
        0,
        {},
        kAuto},
    kLayout,
    OptionInfo{"quiet", kFlag, nullptr, "print only warnings and errors"},
};

constexpr std::array kCommands{
    CommandInfo{Command::kExport, "export", "exports a scene to a model file", kExportPositionals,
                kExportOptions},
    CommandInfo{Command::kScene, "scene", "writes a scene as the exporter will see it",
                kScenePositionals, kSceneOptions},
    CommandInfo{Command::kInspect, "inspect", "checks a model file and prints what it holds",
                kModelPositionals, kInspectOptions},
    CommandInfo{Command::kConvert, "convert", "turns a model file into a format that viewers open",
                kConvertPositionals, kConvertOptions},
    CommandInfo{Command::kView, "view", "writes an HTML page that shows a model file in 3D",
                kModelPositionals, kViewOptions},
    CommandInfo{
        Command::kFormats, "formats", "lists the formats that scenes are read from", {}, {}},
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
