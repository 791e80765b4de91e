// The command `picture`.
#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "app/Commands.h"
#include "app/Messages.h"
#include "app/ShownModel.h"
#include "app/WriteOutput.h"
#include "app/textures/ReadTextures.h"
#include "cli/CommandLine.h"
#include "cli/OptionReading.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"
#include "modelreader/ModelSummary.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "picture/DrawModel.h"
#include "picture/DrawSheet.h"
#include "picture/WritePng.h"
#include "system/Ascii.h"
#include "system/FileIdentity.h"
#include "system/PrintableText.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{kShownPositional};
constexpr std::array kViews{"iso", "top", "front", "side"};  // in the order of NamedView
constexpr std::array kColourings{"material", "batch", "flags",
                                 "texture"};  // in the order of Colouring
constexpr OptionInfo kFrom{
    .name = "from",
    .kind = OptionKind::kText,
    .argument = "VIEW",
    .help =
        "where the picture is seen from: iso (the default), top, front or side; it fits the "
        "drawn triangles",
    .words = kViews};
constexpr OptionInfo kColour{
    .name = "colour",
    .kind = OptionKind::kText,
    .argument = "BY",
    .help =
        "what triangles are coloured by: material (the default), batch or flags, with the "
        "colours of the page of view; texture: the images of --textures, else diffuse colours",
    .words = kColourings};
constexpr std::array kOwnOptions{
    OptionInfo{.name = "output",
               .kind = OptionKind::kText,
               .argument = "FILE",
               .help = "the PNG file to write; \"-\": to standard output",
               .letter = 'o'},
    OptionInfo{.name = "size",
               .kind = OptionKind::kText,
               .argument = "WxH",
               .help = "width and height in pixels, 1 to 4096 each, 1200x800 unless given"},
    kFrom,
    OptionInfo{.name = "camera",
               .kind = OptionKind::kText,
               .argument = "TEXT",
               .help = "the camera of a link to the page of view: its part behind #, or the whole "
                       "link; in place of --from"},
    kColour,
    kTexturesOption,
    OptionInfo{.name = "sheet",
               .kind = OptionKind::kFlag,
               .help = "one sheet with all four views and the numbers"},
};
static_assert(kMaxPictureEdge == 4096, "the help says so");

constexpr PictureSize kDefaultSize{1200, 800};

PictureSize SizeOf(const CommandLine& line) {
  const std::optional<std::string> text = line.Value("size");
  if (!text) return kDefaultSize;
  const std::size_t cross = text->find('x');
  if (cross != std::string::npos) {
    const auto width = ParseWhole(std::string_view(*text).substr(0, cross));
    const auto height = ParseWhole(std::string_view(*text).substr(cross + 1));
    const auto fits = [](const auto& edge) {
      return edge && *edge >= 1 && *edge <= std::uint32_t{kMaxPictureEdge};
    };
    if (fits(width) && fits(height)) {
      return {static_cast<int>(*width), static_cast<int>(*height)};
    }
  }
  throw UsageError(fmt::format("--size: \"{}\" is no size such as 1200x800, of 1 to {} pixels each",
                               *text, kMaxPictureEdge),
                   line.command);
}

struct PictureArguments {
  std::string file;
  std::string output;
  PictureSize size;
  NamedView view = NamedView::kIso;
  std::optional<std::string> link;
  bool sheet = false;
  Colouring colouring = Colouring::kMaterial;
  std::vector<std::string> textures;  ///< folders
};

/// That of the model, or else of a page's link.
int SystemOf(const ShownModel& shown, const PictureArguments& arguments) {
  if (shown.coordinateSystem) return *shown.coordinateSystem;
  const auto exported = arguments.link ? LinkPart(*arguments.link, "exported") : std::nullopt;
  return exported ? ParseRow(kCoordinateSystems, *exported).value_or(0) : 0;
}

PictureArguments Read(const CommandLine& line) {
  const std::optional<std::string> output = PathValue(line, "output");
  if (!output) throw UsageError("-o FILE is missing: the picture to write", line.command);
  if (line.Has("camera") && line.Has("from")) {
    throw UsageError("--camera and --from exclude each other", line.command);
  }
  const bool isTextured = WordValue(line, kColour) == static_cast<std::size_t>(Colouring::kTexture);
  if (isTextured != line.Has("textures")) {
    throw UsageError("--colour texture and --textures DIR need each other", line.command);
  }
  const PictureSize size = SizeOf(line);
  if (line.Has("sheet")) {
    if (line.Has("camera") || line.Has("from")) {
      throw UsageError("--sheet has all views; --camera and --from exclude it", line.command);
    }
    if (std::min(size.width, size.height) < kLeastSheetEdge) {
      throw UsageError(fmt::format("--size: a sheet is at least {0}x{0}", kLeastSheetEdge),
                       line.command);
    }
  }
  return {.file = PositionalPath(line, 0),
          .output = *output,
          .size = size,
          .view = static_cast<NamedView>(WordValue(line, kFrom).value_or(0)),
          .link = line.Value("camera"),
          .sheet = line.Has("sheet"),
          .colouring = static_cast<Colouring>(WordValue(line, kColour).value_or(0)),
          .textures = PathValues(line, "textures")};
}

/// For names that promise another kind of picture. Thumbnailers ask for files without any.
void WarnOfOtherKinds(const std::string& output, Messages& messages) {
  constexpr std::string_view kOthers[] = {".jpg", ".jpeg", ".bmp", ".tga", ".gif", ".webp", ".tif"};
  const auto endsIn = [&output](std::string_view other) { return EndsInAnyCase(output, other); };
  if (std::ranges::any_of(kOthers, endsIn)) {
    messages.Warning("other-extension", output + ": does not end in .png, but is a PNG picture");
  }
}

/// Draws a model file; defects of the file go to standard error.
ExitStatus Run(const CommandLine& line) {
  const PictureArguments arguments = Read(line);
  Messages messages(false);
  const OutputTarget target = FindOutput(arguments.output);
  RequireEffect(line, std::array{arguments.file});
  const std::optional<ShownModel> loaded = LoadShownModel(line, arguments.file, target, messages);
  if (!loaded) return ExitStatus::kFailed;
  const ModelFile& model = loaded->model;
  if (arguments.colouring == Colouring::kFlags && model.layout == ModelLayout::kQob) {
    throw RunError(arguments.file +
                   ": this layout has no flags to colour by; .kob files have them");
  }
  const PageSpace space(model, SystemOf(*loaded, arguments));
  std::optional<Camera> camera = kNamedViews.at(static_cast<std::size_t>(arguments.view));
  if (arguments.link) camera = CameraOfLink(*arguments.link, space);
  if (!camera) {
    throw UsageError(
        fmt::format("--camera: {} has no camera=X,Y,Z,YAW,PITCH,DISTANCE near the level; the page "
                    "writes it into its address once the view is moved",
                    Quoted(*arguments.link)),
        line.command);
  }
  if (Summarise(model).drawn == 0) {
    messages.Note("no-triangle", arguments.file + ": there is no drawn triangle in it");
  }
  TextureImages images;
  if (!arguments.textures.empty()) {
    TakenFiles inputs;
    images =
        PictureTextures(ReadTextures(model, arguments.file, arguments.textures, inputs, messages));
    inputs.RequireFree(target);
  }
  const FaceColours colours(model, arguments.colouring, std::move(images));
  const Picture picture =
      arguments.sheet ? DrawSheet(model, NamePart(arguments.file), space, colours, arguments.size)
                      : DrawModel(model, space, colours, *camera, arguments.size);
  WarnOfOtherKinds(arguments.output, messages);
  const auto write = [&picture](std::ostream& out) { WritePng(picture, out); };
  return WriteOutput(target, write, messages) ? loaded->status : ExitStatus::kFailed;
}

}  // namespace

CommandInfo PictureCommand() {
  static const std::vector<OptionInfo> kOptions = ShownOptions(kOwnOptions);
  return {.name = "picture",
          .summary = "draws a model file or a scene as a PNG picture",
          .positionals = kPositionals,
          .options = kOptions,
          .run = Run};
}

}  // namespace mapexport
