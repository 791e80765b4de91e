#include "BenchHost.h"

#include <filesystem>

#include "plugin/LibraryEntry.h"
#include "plugin/Resources.h"
#include "plugin/state/ProcessState.h"

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
