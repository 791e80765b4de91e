// The plug-in, loaded by a host of the test's.
#pragma once

#include "exporter/base/ProcessState.h"
#include "exporter/plugin/LibraryEntry.h"
#include "exporter/plugin/MapExporter.h"
#include "exporter/plugin/Resources.h"
#include "support/TestSystem.h"
#include "support/Testing.h"

namespace mapexport {

inline constexpr const char* kKey = R"(Software\Corvantis\Talvern\Exporter)";

inline TestSystem::Value Text(const std::string& text) {
  return {RegistryType::kText, text + '\0'};
}

/// Everything starts from a freshly loaded library, in an empty folder.
class PluginTest : public testing::Test {
 protected:
  PluginTest() {
    State().options = ExportOptions();
    fs::current_path(folder_.Path());
    LibraryEntry(AttachModule(kResources));
  }
  ~PluginTest() override {
    DetachModule(State().module);
    fs::current_path("/");
  }

  void Store(const char* name, TestSystem::Value value) {
    system_.registry[{kKey, name}] = std::move(value);
  }
  std::string Stored(const char* name) { return system_.registry[{kKey, name}].bytes; }

  TestSystem system_;
  MapExporter exporter_;
  const TempFolder folder_;
};

}  // namespace mapexport
