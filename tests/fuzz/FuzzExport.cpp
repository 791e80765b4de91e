// Any scene with any options through the whole exporter, to both layouts.
//
// What is written must be sound and hold what was counted, also when it is divided into groups.
// The exporter writes into the current folder, which becomes one of the program's own: paths on
// the command line must be absolute.

#include <array>
#include <charconv>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "exporter/base/ProcessState.h"
#include "exporter/geometry/FaceFlags.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/MapExporter.h"
#include "exporter/plugin/ResourceIds.h"
#include "exporter/plugin/Resources.h"
#include "fuzz/FuzzScene.h"
#include "fuzz/ReadersAgree.h"
#include "modelreader/OverlongLists.h"
#include "reference/LiteralSplit.h"
#include "scene/HostScene.h"
#include "support/TempFolder.h"
#include "support/TestSystem.h"

namespace mapexport {
namespace {

struct Options {
  explicit Options(FuzzBytes& in)
      : weld(!in.OneIn(4)),
        clean(!in.OneIn(4)),
        cxp(in.OneIn(2)),
        coordinates(static_cast<int>(in.Below(6)) - 1),
        textureCoordinates(static_cast<int>(in.Below(6)) - 1),
        seed(in.U8()),
        weldDistance(in.OneIn(2) ? 0.2f : in.Float()),
        voxelSize(in.OneIn(2) ? 1000.0f : in.Float()) {}

  bool weld, clean, cxp;
  int coordinates, textureCoordinates;
  std::uint32_t seed;
  float weldDistance, voxelSize;
};

std::string TextOf(float value) {
  if (std::isinf(value)) return value > 0 ? "1e9999" : "-1e9999";
  std::array<char, 64> text{};
  std::to_chars(text.data(), text.data() + text.size(), value);
  return text.data();
}

struct Exported {
  std::string bytes;
  std::string results;  ///< what the box "Results" shows; empty without welding
};

/// As the host does it, the dialog included.
Exported Export(const Scene& scene, const Options& options, const char* file,
                std::size_t longestList = 0) {
  TestSystem system;
  ProcessState& state = State();
  state.options = ExportOptions();
  state.options.weldVertices = options.weld;
  state.options.cleanVertexAttributes = options.clean;
  state.options.coordinateSystem = options.coordinates;
  state.options.textureCoordinateMode = options.textureCoordinates;
  state.voxelCellSize = {};
  state.random.Seed(options.seed);
  system.beforeButton = [&](HWND, DialogProc*) {
    system.controls[kWeldDistanceEdit].text = TextOf(options.weldDistance);
    system.controls[kVoxelSizeEdit].text = TextOf(options.voxelSize);
    system.controls[kCxpFilenameEdit].text = options.cxp ? "textures.cxp" : "NONE";
  };
  HostScene host(scene, longestList);
  MapExporter exporter;
  exporter.DoExport(file, nullptr, &host, true);
  Require(!system.messageBoxes.empty() && system.messageBoxes.back().title == "Text Scene Export",
          "the export succeeds");
  Exported exported;
  if (options.weld) exported.results = system.messageBoxes.front().text;
  exported.bytes = Content(file);
  return exported;
}

ModelReadResult ReadSound(const Exported& exported, ModelLayout layout) {
  ModelReadResult read = RequireReadersAgree(std::as_bytes(std::span(exported.bytes)), layout);
  for (const ModelProblem& problem : read.problems) {
    Require(problem.severity == ModelSeverity::kWarning, ToLine(problem));
  }
  return read;
}

/// A file that is divided into groups has the same faces as one that is not, in shorter lists.
void CheckParts(const Exported& whole, const Exported& parts, std::size_t longest,
                ModelLayout layout) {
  const ModelReadResult one = ReadSound(whole, layout);
  const ModelReadResult many = ReadSound(parts, layout);
  Require(whole.results == parts.results, "what is counted is not divided");
  for (const GroupLengths& group : many.lengths.groups) {
    Require(std::max({group.vertices, group.collisionPoints, group.faces}) <= longest,
            "the group's lists fit");
    for (const BatchLengths& batch : group.batches) {
      Require(batch.corners <= longest, "the batch's corners fit");
    }
  }
  if (!OverlongLists(one.lengths).empty()) return;
  Require(literal::FacesOf(one.model) == literal::FacesOf(many.model), "every face is there once");
}

std::size_t BatchFaces(const ModelGroup& group) {
  std::size_t count = 0;
  for (const ModelBatch& batch : group.batches) count += batch.faces.size();
  return count;
}

void CheckCounts(const Exported& first, const Exported& second) {
  const ModelReadResult qob = ReadSound(first, ModelLayout::kQob);
  const ModelReadResult kob = ReadSound(second, ModelLayout::kKob);
  Require(qob.model.groups.size() == 1 && kob.model.groups.size() == 1, "there is one group");
  const ModelGroup& drawn = qob.model.groups[0];
  const ModelGroup& group = kob.model.groups[0];
  Require(qob.model.materials.size() == kob.model.materials.size(),
          "the layouts have the same materials");
  Require(group.faces.size() == BatchFaces(drawn), "the first layout draws all faces");
  Require(group.faces.size() == BatchFaces(group) + group.planes.size(),
          "a face is drawn or has a plane");
  std::size_t undrawn = 0;
  std::size_t listed = 0;
  for (const ModelSurfaceSet& set : group.surfaceSets) {
    listed += set.faces.size();
    if ((set.flags & kFlagNotRendered) != 0) undrawn += set.faces.size();
  }
  Require(undrawn == group.planes.size(), "undrawn faces are those of their sets");
  Require(listed == group.faces.size(), "each face is in a set");
  Require(first.results == second.results, "the layouts count the same");
  if (!OverlongLists(kob.lengths).empty()) return;
  std::set<std::uint16_t> vertices;
  std::set<std::uint16_t> points;
  for (const ModelFace& face : group.faces) {
    (face.batch < 0 ? points : vertices).insert(face.vertices.begin(), face.vertices.end());
  }
  Require(vertices.size() == group.vertices.size(), "each vertex is drawn");
  Require(points.size() == group.collisionPoints.size(), "each point belongs to a face");
}

}  // namespace
}  // namespace mapexport

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  static const TempFolder folder;
  static const bool isLoaded = [] {
    fs::current_path(folder.Path());
    Write("textures.cxp", "material glass.bmp\nalphablend\nend\n");
    TestSystem system;
    return LibraryEntry(AttachModule(kResources));
  }();
  Require(isLoaded, "the library loads");
  FuzzBytes in(data, size);
  const Options options(in);
  const Scene scene = FuzzScene(in).Make();
  const Exported qob = Export(scene, options, "fuzz.qob");
  const Exported kob = Export(scene, options, "fuzz.kob");
  CheckCounts(qob, kob);
  const std::size_t longest = 3 + options.seed % 61;
  CheckParts(qob, Export(scene, options, "parts.qob", longest), longest, ModelLayout::kQob);
  CheckParts(kob, Export(scene, options, "parts.kob", longest), longest, ModelLayout::kKob);
  if (options.seed % 8 == 0) {
    Require(Export(scene, options, "fuzz.kob").bytes == kob.bytes, "the same bytes once more");
  }
  State().currentScene = nullptr;
  return 0;
}
