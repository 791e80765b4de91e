// The command `convert`.
#include <array>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "app/Commands.h"
#include "app/LoadModel.h"
#include "app/Messages.h"
#include "app/WriteOutput.h"
#include "cli/CommandLine.h"
#include "cli/OptionReading.h"
#include "cli/SharedOptions.h"
#include "convert/ConvertModel.h"
#include "convert/TargetFormat.h"
#include "convert/TargetSpace.h"
#include "output/OutputPlace.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "system/FdOutput.h"
#include "system/FileIdentity.h"
#include "system/RunError.h"
#include "system/StandardOutput.h"
#include "system/Utf8.h"
#include "worker/HandOver.h"
#include "worker/RunInChild.h"

namespace mapexport {
namespace {

constexpr std::array kPositionals{
    kModelPositional,
    PositionalInfo{"OUT",
                   "the file to write; its extension chooses the format: .glb, .gltf (and a "
                   ".bin), .obj (and a .mtl), .ply or .stl; \"-\": standard output, with --to"},
};
constexpr std::array kTargets{"glb", "gltf", "obj", "ply", "stl"};
constexpr OptionInfo kCoordinates{
    .name = "coordinates",
    .kind = OptionKind::kRow,
    .argument = "SYSTEM",
    .help = "the coordinate system that FILE was exported with, 0 unless given",
    .rows = kCoordinateSystems};
constexpr OptionInfo kTextureCoordinates{
    .name = "texture-coordinates",
    .kind = OptionKind::kRow,
    .argument = "MODE",
    .help = "the texture coordinates that FILE was exported with, 0 unless given",
    .rows = kTextureModes};
constexpr std::array kOptions{
    OptionInfo{.name = "to",
               .kind = OptionKind::kText,
               .argument = "FORMAT",
               .help = "the format: glb, gltf, obj, ply or stl; overrides the extension. gltf "
                       "can't go to standard "
                       "output, obj goes there without its materials",
               .words = kTargets},
    kCoordinates,
    kTextureCoordinates,
    OptionInfo{
        .name = "scale",
        .kind = OptionKind::kText,
        .argument = "NUMBER",
        .help =
            "units of FILE per unit of OUT: auto (100 for formats in metres, else 1) or a decimal "
            "number above 0",
        .words = kScaleWords},
    kLayoutOption,
    kQuietOption,
};

struct ConvertArguments {
  std::string file;
  std::string output;
  const TargetFormat* format = nullptr;  ///< that of the output's extension
  ExportedSpace exported;
  std::optional<float> scale;
  std::optional<ModelLayout> layout;
  bool quiet = false;
};

/// The format that --to names; without --to, that of the extension of `output`.
const TargetFormat& TargetFormatOf(const CommandLine& line, const std::string& output) {
  const std::optional<std::string> name = line.Value("to");
  const TargetFormat* const format = name ? FindNamedFormat(*name) : FindTargetFormat(output);
  std::vector<std::string_view> extensions;
  for (const TargetFormat& each : TargetFormats()) extensions.push_back(each.extension);
  if (IsStandardOutput(output)) {
    if (!name) {
      throw UsageError(
          fmt::format("{}: standard output has no extension; name the format with --to", output),
          line.command);
    }
    if (format != nullptr && format->aloneId == nullptr) {
      throw UsageError(
          fmt::format("--to: a {} needs a second file beside it; name a file", format->extension),
          line.command);
    }
  }
  if (format != nullptr) return *format;
  if (!name) {
    throw UsageError(
        fmt::format("{}: the extension must be one of {}", output, fmt::join(extensions, ", ")),
        line.command);
  }
  for (std::string_view& extension : extensions) extension.remove_prefix(1);
  throw UsageError(fmt::format("--to: \"{}\" is not one of {}", *name, fmt::join(extensions, ", ")),
                   line.command);
}

ConvertArguments Read(const CommandLine& line) {
  ConvertArguments arguments;
  arguments.file = PositionalPath(line, 0);
  arguments.output = PositionalPath(line, 1);
  arguments.format = &TargetFormatOf(line, arguments.output);
  arguments.exported.coordinates = RowValue(line, kCoordinates).value_or(0);
  arguments.exported.textureCoordinates = RowValue(line, kTextureCoordinates).value_or(0);
  arguments.scale = ScaleValue(line);
  arguments.layout = LayoutValue(line);
  arguments.quiet = line.Has("quiet");
  return arguments;
}

/// Notes and warnings for what `output` lacks or changes.
void TellChanges(const std::string& output, const Changes& changes, Messages& messages) {
  const auto note = [&](RemarkCode code, std::uint64_t count, std::string_view text) {
    if (count > 0) messages.Note(code, fmt::format("{}: {} {}", output, count, text), count);
  };
  const auto warn = [&](RemarkCode code, std::uint64_t count, std::string_view text) {
    if (count > 0) messages.Warning(code, fmt::format("{}: {} {}", output, count, text), count);
  };
  warn("colours-changed", changes.colours, "colours have a part below 0 or above 1 and are cut");
  warn("normals-changed", changes.normals,
       "normals have no direction; those of their faces replace them");
  warn("texture-coordinates-changed", changes.textureCoordinates,
       "texture coordinates are not finite; 0 replaces them");
  warn("faces-lost", changes.lostFaces, "triangles have a corner that is not finite; left out");
  note("copies-left-out", changes.copies,
       "reversed copies of triangles left out; their materials show both sides");
  note("collision-left-out", changes.collisionFaces,
       "collision triangles left out; the format has no nodes to separate them");
}

constexpr std::uint64_t Changes::*kCounts[] = {
    &Changes::colours,   &Changes::normals, &Changes::textureCoordinates,
    &Changes::lostFaces, &Changes::copies,  &Changes::collisionFaces};
static_assert(sizeof(Changes) == std::size(kCounts) * sizeof(std::uint64_t));

/// Writes the counts and each file's name and size to the message, the bytes of all files to
/// `output`.
std::string HandOver(const ConvertedModel& converted, FdOutput& output) {
  std::string message;
  std::ostream out(&output);
  for (const auto count : kCounts) PutNumber(message, converted.changes.*count);
  PutNumber(message, converted.files.size());
  for (const ConvertedFile& file : converted.files) {
    PutText(message, file.name);
    PutNumber(message, file.bytes.size());
    out << file.bytes;
  }
  return message;
}

/// A main file and one other are the most that a format writes.
constexpr std::uint64_t kMostFiles = 2;

/// Whether a file of that name stands beside the output: the child must not choose another folder.
bool IsPlainName(std::string_view name) {
  constexpr std::string_view kNoPart("/\0", 2);
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(kNoPart) == std::string_view::npos;
}

/// Reads what HandOver wrote. Throws BadMessage.
ConvertedModel TakeOver(const ChildOutcome& outcome) {
  MessageParts parts(outcome.message);
  ConvertedModel converted;
  for (const auto count : kCounts) converted.changes.*count = parts.Number();
  std::uint64_t at = 0;
  const std::uint64_t count = parts.Number();
  if (count == 0 || count > kMostFiles) throw BadMessage();
  for (std::uint64_t i = 0; i < count; ++i) {
    ConvertedFile& file = converted.files.emplace_back();
    file.name = parts.Text();
    const std::uint64_t size = parts.Number();
    file.bytes = BytesOf(outcome.output, at, size);
    if (!IsPlainName(file.name) || file.bytes.size() != size) throw BadMessage();
    at += size;
  }
  parts.RequireEnd();
  return converted;
}

/// Throws ChildError or bad_alloc unless the child handed over its whole result.
void RequireConverted(const ChildOutcome& outcome) {
  switch (outcome.end) {
    case ChildEnd::kDone:
      return;
    case ChildEnd::kMemoryRanOut:
      throw std::bad_alloc();
    case ChildEnd::kCannotHandOver:
      throw ChildError("the result can't be handed over: " + outcome.message);
    case ChildEnd::kSignal:
      throw ChildError(
          fmt::format("the export library crashed on it ({}), perhaps because memory ran out",
                      SignalText(outcome.number)));
    case ChildEnd::kRefused:
      if (!outcome.message.empty()) throw ChildError(outcome.message);
      [[fallthrough]];
    case ChildEnd::kOtherStatus:
      throw ChildError("the export library ended the process");
  }
}

/// Converts in a child process, because the export library crashes when memory runs out.
ConvertedModel Convert(const ModelFile& model, const std::string& fileName,
                       const TargetFormat& format, const ConvertArguments& arguments) {
  ChildTask task;
  task.run = [&](FdOutput& output) {
    return HandOver(ConvertModel(model, fileName, format, arguments.exported,
                                 arguments.scale.value_or(format.hostUnits)),
                    output);
  };
  try {
    const ChildOutcome outcome = RunInChild(task);
    RequireConverted(outcome);
    return TakeOver(outcome);
  } catch (const BadMessage&) {
    throw RunError(arguments.file + ": not converted: the result can't be read");
  } catch (const ChildError& error) {
    throw RunError(fmt::format("{}: not converted: {}", arguments.file, error.what()));
  }
}

/// The main file names the others in lines of text, so a name must not break a line.
void RequireNameForLines(const OutputTarget& target, const std::string& output) {
  const std::string whole = NamePart(target.path);
  for (std::string_view name = whole; !name.empty();) {
    const CodePoint point = FirstCodePoint(name);
    if (point.valid && IsControl(point.value)) {
      throw RunError(
          fmt::format("{}: the name holds a control character, and the file would name others "
                      "after it",
                      output));
    }
    name.remove_prefix(point.bytes);
  }
}

/// The files, to be put in place together or not at all.
std::vector<std::unique_ptr<OutputPlace>> Fill(TakenFiles taken, const OutputTarget& main,
                                               const std::vector<ConvertedFile>& files) {
  std::vector<std::unique_ptr<OutputPlace>> places;
  const std::string folder = FolderPart(main.path);
  for (const ConvertedFile& file : files) {
    const bool isMain = &file == &files.back();
    const OutputTarget target = isMain ? main : FindOutput(folder + file.name);
    taken.RequireFree(target);
    taken.Add(target.path, "other file of the two");
    const auto write = [&file](std::ostream& out) { out << file.bytes; };
    places.push_back(std::make_unique<OutputPlace>(target, write));
  }
  return places;
}

/// Prints the main file; a format that can do without its second file loses what that holds.
ExitStatus Print(const LoadedModel& loaded, const ConvertArguments& arguments, Messages& messages) {
  TargetFormat format = *arguments.format;
  if (format.aloneId != std::string_view(format.libraryId) && !loaded.model.materials.empty()) {
    const std::size_t count = loaded.model.materials.size();
    messages.Note("materials-left-out",
                  fmt::format("{}: {} materials left out; they would take a second file",
                              arguments.output, count),
                  count);
  }
  format.libraryId = format.aloneId;
  const ConvertedModel converted =
      Convert(loaded.model, fmt::format("model{}", format.extension), format, arguments);
  TellChanges(arguments.output, converted.changes, messages);
  const bool arrived = PrintResult([&](std::ostream& out) { out << converted.files.back().bytes; });
  return arrived ? loaded.status : ExitStatus::kFailed;
}

/// Converts a model file to another format.
ExitStatus Run(const CommandLine& line) {
  const ConvertArguments arguments = Read(line);
  Messages messages(arguments.quiet);
  TakenFiles inputs;
  inputs.Add(arguments.file, "model file");
  const OutputTarget target = FindOutput(arguments.output);
  inputs.RequireFree(target);
  const std::optional<LoadedModel> loaded = LoadModel(arguments.file, arguments.layout, messages);
  if (!loaded) return ExitStatus::kFailed;
  if (target.isStandardOutput) return Print(*loaded, arguments, messages);

  const ConvertedModel converted =
      Convert(loaded->model, NamePart(target.path), *arguments.format, arguments);
  if (converted.files.size() > 1) RequireNameForLines(target, arguments.output);
  TellChanges(arguments.output, converted.changes, messages);
  const auto owned = Fill(inputs, target, converted.files);
  std::vector<OutputPlace*> places;
  places.reserve(owned.size());
  for (const auto& place : owned) places.push_back(place.get());
  OutputPlace::CommitTogether(places);
  TellPlaced(places, messages, [] {});
  return loaded->status;
}

}  // namespace

CommandInfo ConvertCommand() {
  return {.name = "convert",
          .summary = "turns a model file into a format that viewers open",
          .positionals = kPositionals,
          .options = kOptions,
          .run = Run};
}

}  // namespace mapexport
