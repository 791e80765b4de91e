#include "StageRuns.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

#include "BenchHost.h"
#include "MeasuredRun.h"
#include "exporter/base/ProcessState.h"
#include "exporter/geometry/RenderBatches.h"
#include "exporter/geometry/VoxelPartition.h"
#include "exporter/plugin/CurrentExport.h"
#include "exporter/plugin/MapExporter.h"
#include "scene/SceneFile.h"

namespace mapexport {
namespace {

constexpr const char* kWritten = "written.kob";
constexpr const char* kExported = "exported.kob";

VoxelPartition Cells(const GeometryGroup& group) {
  return BuildVoxelPartition(group, VoxelGrid(group, State().options.geometryVoxelSize),
                             State().random);
}

void RegisterPasses(LevelStages& stages) {
  const auto add = [&stages](const std::string& name, const GeometryGroup& before, auto&& pass) {
    RegisterRun(
        name,
        [&stages, &before] {
          BenchHost::Begin(stages.gathered.model);
          return before;
        },
        [pass](GeometryGroup& group) {
          pass(group);
          return 0;
        });
  };
  add("weld", stages.gathered.group, [](GeometryGroup& group) { Weld(group); });
  add("clean", stages.welded, [](GeometryGroup& group) { CleanVertexAttributes(group); });
  add("weld + clean", stages.gathered.group, [](GeometryGroup& group) {
    Weld(group);
    CleanVertexAttributes(group);
  });
}

void RegisterWriting(LevelStages& stages) {
  RegisterRun(
      "cells",
      [&stages] {
        BenchHost::Begin(stages.gathered.model);
        return stages.prepared;
      },
      [](const GeometryGroup& group) { return Cells(group); });
  RegisterRun(
      "batches",
      [&stages] {
        BenchHost::Begin(stages.gathered.model);
        return std::pair(stages.prepared, Cells(stages.prepared));
      },
      [](std::pair<GeometryGroup, VoxelPartition>& input) {
        BuildRenderBatches(input.first, input.second, State().currentScene->materials);
        return 0;
      });
  RegisterRun(
      "write all",
      [&stages] {
        std::remove(kWritten);
        return stages.ModelToWrite();
      },
      [](std::unique_ptr<ExportModel>& model) { return WriteKobFile(*model, kWritten); });
}

void RegisterExport(LevelStages& stages, const std::string& file) {
  RegisterRun(
      "export " + file.substr(file.rfind('.') + 1),
      [=, &stages] {
        std::remove(file.c_str());
        BenchHost::Begin(stages.gathered.model);
        return MapExporter();
      },
      [=, &stages](MapExporter& exporter) {
        return exporter.DoExport(file.c_str(), nullptr, &stages.gathered.host, true);
      });
}

std::string BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The timed stages together must be the whole export.
void RequireSameBytes(LevelStages& stages) {
  const std::unique_ptr<ExportModel> model = stages.ModelToWrite();
  const bool isWritten = WriteKobFile(*model, kWritten);
  BenchHost::Begin(*model);
  MapExporter().DoExport(kExported, nullptr, &stages.gathered.host, true);
  const std::string bytes = BytesOf(kWritten);
  if (!isWritten || bytes.empty() || bytes != BytesOf(kExported)) {
    throw std::runtime_error("the stages and the export don't write the same bytes");
  }
}

}  // namespace

void RegisterStages(LevelStages& stages, const std::string& sceneFile) {
  RequireSameBytes(stages);
  RegisterRun(
      "load", [] { return 0; }, [=](int) { return ReadSceneFile(sceneFile); });
  RegisterRun(
      "gather",
      [] {
        auto model = std::make_unique<ExportModel>(0);
        BenchHost::Begin(*model);
        return model;
      },
      [&stages](std::unique_ptr<ExportModel>& model) {
        model->Gather(stages.gathered.host.GetRootNode());
        return 0;
      });
  RegisterPasses(stages);
  RegisterWriting(stages);
  RegisterExport(stages, kExported);
  RegisterExport(stages, "exported.qob");
}

}  // namespace mapexport
