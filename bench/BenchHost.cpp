#include "BenchHost.h"

#include <filesystem>

#include "exporter/base/ProcessState.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/Resources.h"

namespace mapexport {
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

}  // namespace mapexport
