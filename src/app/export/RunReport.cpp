#include "app/export/RunReport.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string_view>

#include "app/export/ExportArguments.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"
#include "system/JsonStream.h"

namespace mapexport {
namespace {

constexpr std::string_view kLeftOut = "left-out-";

void WriteMember(JsonStream& json, std::string_view key, const std::string& text) {
  json.Key(key);
  json.Text(text);
}

void WriteMember(JsonStream& json, std::string_view key, std::uint64_t number) {
  json.Key(key);
  json.Number(number);
}

void WriteTexts(JsonStream& json, std::string_view key, std::span<const std::string> texts) {
  json.Key(key);
  json.Open('[', true);
  for (const std::string& text : texts) json.Text(text);
  json.Close(']');
}

/// In the order of the help.
void WriteOptions(JsonStream& json, const GivenOptions& options) {
  json.Key("options");
  json.Open('{', true);
  for (const OptionInfo& option : ExportOptions()) {
    const auto found = options.find(option.name);
    if (found == options.end()) {
      if (option.kind != OptionKind::kFlag || !option.shapesOutput) continue;
      json.Key(option.name);
      json.Bool(false);
    } else if (option.kind == OptionKind::kFlag || option.kind == OptionKind::kSwitch) {
      json.Key(option.name);
      json.Bool(found->second.back() != "off");
    } else if (option.repeats) {
      WriteTexts(json, option.name, found->second);
    } else {
      WriteMember(json, option.name, found->second.back());
    }
  }
  json.Close('}');
}

void WriteInputs(JsonStream& json, std::span<const InputFile> inputs) {
  json.Key("inputs");
  json.Open('[', true);
  for (const InputFile& input : inputs) {
    json.Open('{', false);
    WriteMember(json, "path", input.path);
    if (!input.sha256.empty()) WriteMember(json, "sha256", input.sha256);
    json.Close('}');
  }
  json.Close(']');
}

void WriteConfinement(JsonStream& json, const Confinement& confinement) {
  const auto state = [](const std::string& lack) { return lack.empty() ? "in force" : lack; };
  json.Key("confinement");
  json.Open('{', true);
  WriteMember(json, "seccomp", state(confinement.calls));
  WriteMember(json, "landlock", state(confinement.files));
  WriteMember(json, "capabilities", state(confinement.capabilities));
  WriteMember(json, "limits", state(confinement.limits));
  WriteMember(json, "timer", confinement.timer ? state(*confinement.timer) : "no time limit");
  json.Close('}');
}

void WriteBefore(JsonStream& json, const SceneCensus& census) {
  json.Key("before");
  json.Open('{', true);
  WriteMember(json, "nodes", census.nodes.size());
  WriteMember(json, "vertices", census.vertices);
  WriteMember(json, "triangles", census.triangles);
  WriteMember(json, "materials", census.materials);
  json.Key("extent");
  json.Number(census.extent);
  json.Close('}');
}

void WriteAfter(JsonStream& json, const ModelCounts& counts, ModelLayout layout) {
  json.Key("after");
  json.Open('{', true);
  WriteMember(json, "layout", layout == ModelLayout::kQob ? "qob" : "kob");
  WriteMember(json, "materials", counts.materials);
  WriteMember(json, "groups", counts.groups);
  WriteMember(json, "vertices", counts.vertices);
  WriteMember(json, "batches", counts.batches);
  WriteMember(json, "batchFaces", counts.batchFaces);
  WriteMember(json, "corners", counts.corners);
  if (layout == ModelLayout::kKob) {
    WriteMember(json, "collisionPoints", counts.collisionPoints);
    WriteMember(json, "faces", counts.faces);
    WriteMember(json, "surfaceSets", counts.surfaceSets);
  }
  json.Close('}');
}

void WriteTextures(JsonStream& json, std::span<const TextureUse> textures) {
  json.Key("textures");
  json.Open('[', true);
  for (const TextureUse& use : textures) {
    json.Open('{', false);
    WriteMember(json, "name", use.texture.name);
    json.Key("materials");
    json.Open('[', false);
    for (const std::string& material : use.texture.materials) json.Text(material);
    json.Close(']');
    if (use.wanted) {
      json.Key("found");
      json.Bool(use.file.has_value());
    }
    if (use.file) {
      WriteMember(json, "file", use.file->path);
      WriteMember(json, "bytes", use.file->bytes);
    }
    json.Close('}');
  }
  json.Close(']');
}

void WriteRemarks(JsonStream& json, std::string_view key, std::span<const Remark> remarks,
                  RemarkKind kind) {
  json.Key(key);
  json.Open('[', true);
  for (const Remark& remark : remarks) {
    if (remark.kind != kind) continue;
    json.Open('{', false);
    WriteMember(json, "code", remark.code);
    WriteMember(json, "count", remark.count);
    WriteMember(json, "text", remark.text);
    if (!remark.nodes.empty()) WriteTexts(json, "nodes", remark.nodes);
    json.Close('}');
  }
  json.Close(']');
}

/// What the importer left out, plus what the exporter left out according to the remarks.
void WriteLeftOut(JsonStream& json, std::span<const Remark> byImporter,
                  std::span<const Remark> remarks) {
  std::map<std::string_view, std::uint64_t> counts;
  for (const std::span<const Remark> list : {byImporter, remarks}) {
    for (const Remark& remark : list) {
      const std::string_view code = remark.code;
      if (!code.starts_with(kLeftOut)) continue;
      std::uint64_t& count = counts[code.substr(kLeftOut.size())];
      count = AddCounts(count, remark.count);
    }
  }
  json.Key("leftOut");
  json.Open('{', true);
  for (const auto& [what, count] : counts) WriteMember(json, what, count);
  json.Close('}');
}

void WriteTimes(JsonStream& json, std::span<const Stages::Time> times) {
  json.Key("milliseconds");
  json.Open('{', true);
  for (const Stages::Time& time : times) {
    json.Key(time.name);
    json.Number(std::chrono::duration_cast<std::chrono::milliseconds>(time.duration).count());
  }
  json.Close('}');
}

}  // namespace

ModelCounts CountModel(const ModelLengths& lengths) {
  ModelCounts counts;
  counts.materials = lengths.materials;
  counts.twoSidedMaterials = lengths.twoSidedMaterials;
  counts.groups = lengths.groups.size();
  for (const GroupLengths& group : lengths.groups) {
    counts.vertices += group.vertices;
    counts.batches += group.batches.size();
    for (const BatchLengths& batch : group.batches) {
      counts.batchFaces += batch.faces;
      counts.corners += batch.corners;
    }
    counts.collisionPoints += group.collisionPoints;
    counts.faces += group.faces;
    counts.surfaceSets += group.surfaceSets;
  }
  return counts;
}

void WriteReport(const RunReport& report, std::span<const Remark> remarks,
                 std::span<const Stages::Time> times, std::ostream& out) {
  JsonStream json(out);
  json.Open('{', true);
  WriteMember(json, "format", "mapexport-report");
  WriteMember(json, "version", 1);
  WriteMember(json, "program", MAPEXPORT_VERSION);
  WriteMember(json, "status", static_cast<std::uint64_t>(report.status));
  if (!report.error.empty()) WriteMember(json, "error", report.error);
  WriteMember(json, "scene", report.scene);
  WriteMember(json, "output", report.output);
  if (!report.sha256.empty()) {
    WriteMember(json, "sha256", report.sha256);
    WriteMember(json, "bytes", report.bytes);
  }
  WriteMember(json, "seed", report.seed);
  if (!report.options.empty()) WriteOptions(json, report.options);
  if (!report.inputs.empty()) WriteInputs(json, report.inputs);
  WriteTexts(json, "dependencies", report.dependencies);
  if (report.confinement) WriteConfinement(json, *report.confinement);
  if (report.before) WriteBefore(json, *report.before);
  if (report.layout) WriteAfter(json, report.after, *report.layout);
  if (report.layout) WriteTextures(json, report.textures);
  WriteRemarks(json, "warnings", remarks, RemarkKind::kWarning);
  WriteRemarks(json, "notes", remarks, RemarkKind::kNote);
  WriteLeftOut(json, report.leftOut, remarks);
  WriteTimes(json, times);
  json.Close('}');
}

int CoordinateSystemOf(const RunReport& report) {
  const auto given = report.options.find("coordinates");
  if (given == report.options.end()) return 0;
  return ParseRow(kCoordinateSystems, given->second.front()).value_or(0);
}

}  // namespace mapexport
