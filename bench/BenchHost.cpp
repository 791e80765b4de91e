#include "BenchHost.h"

#include <filesystem>

#include "plugin/LibraryEntry.h"
#include "plugin/Resources.h"
#include "plugin/state/ProcessState.h"

namespace mapexport {
namespace {

GeometryGroup& Gathered(ExportModel& model, const HostScene& host) {
  BenchHost::Begin(model);
  model.Gather(host.GetRootNode());
  return *model.groups.At(0);
}

}  // namespace

BenchHost::BenchHost(const std::string& folder) : module_(AttachModule(kResources)) {
  std::filesystem::current_path(folder);
  LibraryEntry(module_);
  DebugLog::Instance().Open("ExportDebug.txt");
}

BenchHost::~BenchHost() {
  DetachModule(module_);
}

void BenchHost::Begin(ExportModel& model) {
  ProcessState& state = State();
  state.currentScene = &model;
  state.voxelCellSize = {};
  state.random.Seed(1);
}

GatheredScene::GatheredScene(const Scene& scene)
    : host(scene), model(0), group(Gathered(model, host)) {}

}  // namespace mapexport
