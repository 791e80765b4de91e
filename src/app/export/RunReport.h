// The report on one run of `export`, for programs; docs/report.md describes it.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "app/Messages.h"
#include "app/Stages.h"
#include "app/export/InputFiles.h"
#include "app/textures/FindTextures.h"
#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"
#include "modelreader/ModelLengths.h"
#include "scene/SceneCensus.h"
#include "worker/ConfineReader.h"

namespace mapexport {

/// The lengths of a model file's lists, summed over its groups.
struct ModelCounts {
  std::uint64_t materials = 0;
  std::uint64_t twoSidedMaterials = 0;
  std::uint64_t groups = 0;
  std::uint64_t vertices = 0;
  std::uint64_t batches = 0;
  std::uint64_t batchFaces = 0;
  std::uint64_t corners = 0;
  // Only in the second layout.
  std::uint64_t collisionPoints = 0;
  std::uint64_t faces = 0;
  std::uint64_t surfaceSets = 0;
};

ModelCounts CountModel(const ModelLengths& lengths);

/// What is known of a run; filled in as the run proceeds.
struct RunReport {
  ExitStatus status = ExitStatus::kFailed;
  std::string error;   ///< why the run failed, in one line
  std::string scene;   ///< as given on the command line
  std::string output;  ///< the same, with ".map" where it is appended
  std::uint32_t seed = 0;
  GivenOptions options;           ///< in effect; empty before the dialog has ended
  std::vector<InputFile> inputs;  ///< the files that shaped the output
  std::string sha256;             ///< of the output
  std::uint64_t bytes = 0;
  std::vector<std::string> dependencies;   ///< the files that the output depends on
  Remarks leftOut;                         ///< what the importer left out
  std::optional<Confinement> confinement;  ///< for a foreign scene
  std::optional<SceneCensus> before;
  std::optional<ModelLayout> layout;
  ModelCounts after;                 ///< set when there is a layout
  std::vector<TextureUse> textures;  ///< the same
};

void WriteReport(const RunReport& report, std::span<const Remark> remarks,
                 std::span<const Stages::Time> times, std::ostream& out);

/// The coordinate system of the export, 0 to 3.
int CoordinateSystemOf(const RunReport& report);

}  // namespace mapexport
