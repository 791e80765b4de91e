#include "app/export/CallExporter.h"

#include <chrono>
#include <memory>

#include "app/PluginLibrary.h"
#include "scene/HostScene.h"

namespace mapexport {

void CallExporter(const Scene& scene, std::size_t longestList, const std::string& folder,
                  const std::string& name, System& system, ExporterLog& log) {
  struct Installed {
    explicit Installed(System& system) { InstallSystem(&system); }
    ~Installed() { InstallSystem(nullptr); }
  };
  const Installed installed(system);
  const PluginLibrary library(PluginLibrary::Path());
  HostScene host(scene, longestList);
  ExpInterface enumeration;
  const std::unique_ptr<SceneExport> exporter = library.CreateExporter();
  const std::string path = folder + name;
  log.EnterFolder(folder);
  exporter->DoExport(path.c_str(), &enumeration, &host, false);
  log.LeaveFolder();  // it may have ended before it showed the dialog
}

std::uint32_t ClockSeed() {
  using namespace std::chrono;
  return static_cast<std::uint32_t>(
      duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

}  // namespace mapexport
