#include "app/export/ExportRemarks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "system/Counted.h"

namespace mapexport {
namespace {

// The parts of the triangles, as divisors, that may be lost without a warning. A few degenerate
// ones may be lost anyway: nobody sees them.
constexpr std::uint64_t kWeldedPart = 50;
constexpr std::uint64_t kDegeneratePart = 10;
constexpr std::uint64_t kFewDegenerate = 10;
// The longest level that is likely to be in metres, in the host's units: most are centimetres.
constexpr float kLongestInMetres = 2000;
// The exporter removes triangles with a corner nearer than this to the opposite edge.
constexpr float kSliverWidth = 0.32f;

constexpr std::uint64_t kFewTriangles = 1000;
constexpr std::uint64_t kTrianglesPerBatch = 20;
// What a voxel size is chosen for.
constexpr double kTrianglesPerCell = 200;

/// "512 bytes", "74 KB", "1.2 MB"
std::string SizeText(std::uint64_t bytes) {
  constexpr std::uint64_t kKilo = 1000;
  if (bytes < kKilo) return Counted(bytes, "byte");
  if (bytes < kKilo * kKilo) return fmt::format("{} KB", (bytes + kKilo / 2) / kKilo);
  return fmt::format("{:.1f} MB", static_cast<double>(bytes) / (kKilo * kKilo));
}

bool WasTold(std::string_view code, const Messages& messages) {
  return std::ranges::find(messages.Told(), code, &Remark::code) != messages.Told().end();
}

/// What keeps more of the triangles that welding takes.
std::string AdviceOnLoss(const RunReport& report, float weldDistance, const Messages& messages) {
  const std::string limits =
      fmt::format("corners nearer than {} become one, and triangles narrower than {} are removed",
                  weldDistance, kSliverWidth);
  if (weldDistance > kSliverWidth) return limits + "; a smaller --weld-distance keeps more";
  // A scene file has no scale.
  if (!report.confinement) return limits + "; the scene's lengths may be too small";
  if (report.before->extent < kLongestInMetres && !WasTold("scale", messages)) {
    return limits + "; looks like metres: --scale 100";
  }
  return limits + "; a larger --scale keeps more";
}

void WarnOfLoss(const RunReport& report, float weldDistance, const ExporterTalk& talk,
                Messages& messages) {
  const auto& faces = talk.Faces();
  const std::uint64_t welded = faces ? faces->before - std::min(faces->before, faces->after) : 0;
  if (welded > 0 && welded * kWeldedPart > faces->before) {
    messages.Warning(
        "few-triangles-left",
        fmt::format("{}: welding and slivers took {} of {} triangles: {}", report.output, welded,
                    faces->before, AdviceOnLoss(report, weldDistance, messages)),
        welded);
  }
  const std::uint64_t triangles = report.before->triangles;
  const std::uint64_t degenerate = talk.DegenerateTriangles();
  if (degenerate >= kFewDegenerate && degenerate * kDegeneratePart > triangles) {
    Remark remark = MakeWarning("few-triangles-left",
                                fmt::format("{}: {} of {} triangles have no area and are left out",
                                            report.output, degenerate, triangles),
                                degenerate);
    remark.nodes = talk.DegenerateNodes();
    messages.Tell(std::move(remark));
  }
}

void NoteDoubling(const RunReport& report, const ExporterTalk& talk, Messages& messages) {
  // Without welding all of them are in the output.
  const std::uint64_t all =
      talk.Faces() ? talk.Faces()->before : std::max(report.after.batchFaces, report.after.faces);
  const std::uint64_t single = report.before->triangles - talk.DegenerateTriangles();
  if (all <= single) return;
  messages.Note("doubled-triangles",
                fmt::format("{}: {} doubled: {}; --one-sided exports them once", report.output,
                            Counted(all - single, "triangle"),
                            Counted(report.after.twoSidedMaterials, "two-sided material")),
                all - single);
}

/// `size` or the next larger one of 1, 2, 5, 10, 20, ...
double RoundedUp(double size) {
  const double power = std::pow(10.0, std::floor(std::log10(size)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= size) return factor * power;
  }
  return 10 * power;
}

/// A voxel size for cells that are large enough; nothing when one cell already holds all.
std::optional<double> SensibleVoxelSize(const RunReport& report, float voxelSize) {
  const double extent = static_cast<double>(report.before->extent);
  const double current = static_cast<double>(voxelSize);
  if (!(extent > 0) || !std::isfinite(extent) || !(current > 0) || current >= extent) {
    return std::nullopt;
  }
  // A level is mostly surfaces: the cells that they cross grow with the square of their number per
  // edge, and so do the batches. Cells smaller than triangles don't follow this rule.
  const auto triangles = static_cast<double>(report.after.batchFaces);
  const double wanted = triangles / (2 * kTrianglesPerBatch);
  const double byBatches = current * std::sqrt(static_cast<double>(report.after.batches) / wanted);
  const double byTriangles = extent / std::max(1.0, std::sqrt(triangles / kTrianglesPerCell));
  return RoundedUp(std::min(extent, std::max(byBatches, byTriangles)));
}

void WarnOfBatches(const RunReport& report, float voxelSize, Messages& messages) {
  const ModelCounts& counts = report.after;
  if (counts.batchFaces <= kFewTriangles) return;
  // A group has at least one, however large the cells are.
  const std::uint64_t further = counts.batches - std::min(counts.groups, counts.batches);
  if (further * kTrianglesPerBatch <= counts.batchFaces) return;
  const std::optional<double> size = SensibleVoxelSize(report, voxelSize);
  messages.Warning(
      "many-batches",
      fmt::format("{}: {} triangles are in {} batches; {}", report.output, counts.batchFaces,
                  counts.batches,
                  size ? fmt::format("--voxel-size {} makes sensible cells", *size)
                       : "one voxel cell holds them all, so materials or hard edges divide them"),
      counts.batches);
}

}  // namespace

void RemarkOnCensus(const SceneCensus& census, const std::string& name, Messages& messages) {
  Remarks remarks;
  const auto add = [&](Remark remark, const std::vector<std::string>& nodes) {
    if (nodes.empty()) return;
    remark.text = fmt::format("{} left out: {}", Counted(nodes.size(), "node"), remark.text);
    remark.count = nodes.size();
    remark.nodes = nodes;
    remarks.push_back(std::move(remark));
  };
  add(MakeNote("left-out-excluded", "named \"exclude...\", or below such a node"), census.excluded);
  add(MakeWarning("left-out-unreached",
                  "the exporter does not visit nodes below a mesh without triangles"),
      census.unreached);
  messages.TellAll(name, std::move(remarks));
}

void RemarkOnExport(const RunReport& report, const ExportSystem::Values& values,
                    const ExporterTalk& talk, Messages& messages) {
  NoteDoubling(report, talk, messages);
  WarnOfLoss(report, values.weldDistance, talk, messages);
  WarnOfBatches(report, values.voxelSize, messages);
  if (std::max(report.after.batchFaces, report.after.faces) == 0 &&
      !WasTold("no-triangle", messages)) {
    messages.Warning("no-triangle", fmt::format("{}: there is no triangle in it", report.output));
  }
}

Remark ExportedNote(const RunReport& report) {
  const ModelCounts& counts = report.after;
  const std::string undrawn =
      counts.faces > counts.batchFaces
          ? fmt::format(", {} for collision only", counts.faces - counts.batchFaces)
          : "";
  Remark remark = MakeNote(
      "exported",
      fmt::format("{}: {} in {}{}, {}", report.output, Counted(counts.batchFaces, "triangle"),
                  counts.batches == 1 ? "1 batch" : fmt::format("{} batches", counts.batches),
                  undrawn, SizeText(report.bytes)));
  remark.output = {report.output, report.bytes, counts.batchFaces, counts.batches,
                   counts.faces - std::min(counts.batchFaces, counts.faces)};
  return remark;
}

}  // namespace mapexport
