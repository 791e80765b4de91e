#include "app/PluginLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include "app/FindLibrary.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

template <typename Function>
Function* FindFunction(void* library, const std::string& path, const char* name) {
  void* const symbol = dlsym(library, name);
  if (symbol == nullptr) throw RunError(fmt::format("{}: has no function {}", path, name));
  return reinterpret_cast<Function*>(symbol);
}

ClassDesc* FindExporter(void* library, const std::string& path) {
  FindFunction<LibDescriptionFunction>(library, path, "LibDescription");
  const auto version = FindFunction<LibVersionFunction>(library, path, "LibVersion");
  const auto count = FindFunction<LibNumberClassesFunction>(library, path, "LibNumberClasses");
  const auto classDesc = FindFunction<LibClassDescFunction>(library, path, "LibClassDesc");
  if (version() != kHostApiVersion) {
    throw RunError(fmt::format("{}: has version {:#x} of the plug-in interface, not {:#x}", path,
                               version(), kHostApiVersion));
  }
  for (int i = 0; i < count(); ++i) {
    ClassDesc* const found = classDesc(i);
    if (found != nullptr && found->SuperClassID() == kSceneExportSuperClassID) return found;
  }
  throw RunError(
      fmt::format("{}: describes no scene exporter, perhaps because memory ran out", path));
}

}  // namespace

PluginLibrary::PluginLibrary(const std::string& path)
    : path_(path), handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), dlclose) {
  if (!handle_) {
    // Its text already begins with the path.
    const char* const error = dlerror();
    throw RunError(error == nullptr ? fmt::format("{}: cannot be loaded", path) : error);
  }
  exporter_ = FindExporter(handle_.get(), path_);
}

PluginLibrary::~PluginLibrary() = default;

std::string PluginLibrary::Path() {
  return FindLibrary("mapexport-plugin.so");
}

std::unique_ptr<SceneExport> PluginLibrary::CreateExporter() const {
  // Classes of this super class create a SceneExport.
  std::unique_ptr<SceneExport> exporter(static_cast<SceneExport*>(exporter_->Create(false)));
  if (!exporter)
    throw RunError(fmt::format("{}: creates no exporter, perhaps because memory ran out", path_));
  return exporter;
}

}  // namespace mapexport
