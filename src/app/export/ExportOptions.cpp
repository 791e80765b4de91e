#include "app/export/ExportOptions.h"

#include <array>

#include "app/export/DialogControls.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"

namespace mapexport {
namespace {

using enum OptionKind;

constexpr OptionInfo kOutputLayoutOption{
    .name = kLayoutOption.name,
    .kind = kText,
    .argument = "LAYOUT",
    .help = "the layout of what --output-folder exports: qob, or kob (the default)",
    .words = kLayouts};

constexpr std::array kPositionals{
    PositionalInfo{"SCENE",
                   "a .scene.json or .scene.bin, or FBX, glTF, OBJ, 3DS, ASE, DAE and more"},
    PositionalInfo{"OUTPUT",
                   "the model file; \".qob\" gets the first layout, every other extension the "
                   "second; without one, \".map\" is appended",
                   true},
};

constexpr std::array kOptions{
    OptionInfo{.name = "weld",
               .kind = kSwitch,
               .help = "\"Weld Vertices\" (on): vertices within the weld distance become one",
               .control = kWeldControl},
    OptionInfo{.name = "weld-distance",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Weld Distance:\" (0.2), in host units",
               .control = kWeldDistanceControl},
    OptionInfo{.name = "remove-t-vertices",
               .kind = kSwitch,
               .help = "\"Remove T-Vertices\" (off): no effect on the output, but while it is "
                       "set, welding can't be switched off",
               .control = kRemoveTVerticesControl},
    OptionInfo{.name = "min-triangle-area",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Min Triangle Area:\" (1): no effect on the output",
               .control = kMinTriangleAreaControl},
    OptionInfo{.name = "snap",
               .kind = kSwitch,
               .help = "\"Snap To Grid\" (off): no effect on the output",
               .control = kSnapControl},
    OptionInfo{.name = "snap-dimension",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Snap Dimension:\" (1): no effect on the output",
               .control = kSnapDimensionControl},
    OptionInfo{.name = "clean",
               .kind = kSwitch,
               .help = "\"Clean Vertex Attributes\" (on): equal normals, texture coordinates and "
                       "colours at a vertex are shared",
               .control = kCleanControl},
    OptionInfo{.name = "lighting-multiplier",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Lighting Multiplier:\" (1): no effect on the output",
               .control = kLightingMultiplierControl},
    OptionInfo{.name = "talvern-light-format",
               .kind = kSwitch,
               .help = "\"Talvern Light Format\" (off): no effect on the output, not remembered",
               .control = kLightFormatControl},
    OptionInfo{.name = "voxel-size",
               .kind = kNumber,
               .argument = "X",
               .help = "\"Voxel Size:\" (1000): edge of the cells that render batches are made of",
               .control = kVoxelSizeControl},
    OptionInfo{
        .name = "cxp",
        .kind = kText,
        .argument = "FILE",
        .help =
            "\"CXP Filename\" (none): the text database that lists the transparent textures, as if "
            "picked with Browse; relative to the current directory",
        .control = kBrowseControl},
    OptionInfo{.name = "coordinates",
               .kind = kRow,
               .argument = "SYSTEM",
               .help = "\"Export Coordinate System\" (0)",
               .control = kCoordinatesControl,
               .rows = kCoordinateSystems},
    OptionInfo{.name = "texture-coordinates",
               .kind = kRow,
               .argument = "MODE",
               .help = "\"Texture Coordinates\" (0)",
               .control = kTextureCoordinatesControl,
               .rows = kTextureModes},
    OptionInfo{.name = "split",
               .kind = kFlag,
               .help = "divide a group with a list longer than 16-bit indices can address; its "
                       "parts are the groups NAME, NAME_2, ...; a loader must loop over the "
                       "groups, and material indices are the file's",
               .shapesOutput = true},
    OptionInfo{.name = "longest-list",
               .kind = kText,
               .argument = "N",
               .help = "--split with lists of at most N entries, 3 to 65536",
               .shapesOutput = true},
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
               .help = "start from the initial values and save nothing; neither a store named by "
                       "--settings nor a mapexport.toml is used"},
    OptionInfo{.name = "seed",
               .kind = kText,
               .argument = "N",
               .help = "the number that seeds the random generator, 0 to 4294967295; the same "
                       "scene, options and seed give the same bytes",
               .shapesOutput = true},
    kUpOption,
    kSceneScaleOption,
    kHiddenOption,
    kReadLimitOption,
    kKeywordsOption,
    kOneSidedOption,
    OptionInfo{
        .name = "strict",
        .kind = kFlag,
        .help = "a warning is an error: status 1, and nothing is replaced; lists that are too long "
                "and an output without triangles are warnings here"},
    kAllowOption,
    OptionInfo{.name = kOutputFolder,
               .kind = kText,
               .argument = "DIR",
               .help =
                   "export any number of scenes, each in a process of its own, to DIR/NAME.kob, "
                   "with the log DIR/NAME.ExportDebug.txt; NAME is the scene's file name "
                   "without its extension; a missing DIR is made"},
    kOutputLayoutOption,
    OptionInfo{.name = kJobs,
               .kind = kText,
               .argument = "N",
               .help = "how many scenes --output-folder exports at once; unless given, as many as "
                       "there are processors; fewer when they might not fit into memory"},
    OptionInfo{.name = "textures",
               .kind = kText,
               .argument = "DIR",
               .help = "look for each texture in this folder, by its name without extension, in "
                       "whatever case; can be repeated; one that is not found is a warning",
               .repeats = true},
    OptionInfo{.name = "copy-textures",
               .kind = kText,
               .argument = "DIR",
               .help = "copy the textures that are found to this folder, and replace nothing that "
                       "differs; a missing DIR is made; without --textures they are looked for "
                       "where the scene names them "
                       "and beside it"},
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
    OptionInfo{.name = "repeat",
               .kind = kText,
               .argument = "REPORT",
               .help = "export again what --report wrote of, with its scene, options and seed, to "
                       "the same bytes; an input that has changed is an error. OUTPUT is the only "
                       "argument then"},
    OptionInfo{.name = "show-options",
               .kind = kFlag,
               .help = "print each option that shapes the output, its value and where that comes "
                       "from, and export nothing; OUTPUT may be left out"},
    OptionInfo{.name = "watch",
               .kind = kFlag,
               .help = "export again whenever a file that the output depends on changes, until "
                       "Ctrl-C"},
    OptionInfo{.name = "view",
               .kind = kFlag,
               .help = "write also OUTPUT.html, the page of `view`; with --watch, serve it on this "
                       "machine: the browser shows each export as it is done"},
    OptionInfo{
        .name = "log",
        .kind = kText,
        .argument = "FILE",
        .help =
            "where the exporter's log goes instead of ExportDebug.txt in the current directory"},
    OptionInfo{.name = "no-log", .kind = kFlag, .help = "write no log"},
    kQuietOption,
    OptionInfo{.name = "verbose",
               .kind = kFlag,
               .help = "print also versions of libraries, unit factors and times"},
    kMessagesOption,
};
}  // namespace

std::span<const PositionalInfo> ExportPositionals() {
  return kPositionals;
}

std::span<const OptionInfo> ExportOptions() {
  return kOptions;
}

}  // namespace mapexport
