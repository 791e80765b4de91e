// Loads the exporter's library, as the host does at its start.
#pragma once

#include <memory>
#include <string>

#include "host/Plugin.h"

namespace mapexport {

/// A loaded plug-in library with one scene exporter. A System must be installed during its
/// lifetime.
class PluginLibrary {
 public:
  /// Throws RunError when the file at `path` can't be loaded, has another version of the host's
  /// interface, or describes no scene exporter.
  explicit PluginLibrary(const std::string& path);
  ~PluginLibrary();
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  /// This program's own library, mapexport-plugin.so, found by FindLibrary. Throws RunError.
  static std::string Path();

  /// A new exporter, which must be destroyed before the library. Throws RunError when the library
  /// creates none.
  std::unique_ptr<SceneExport> CreateExporter() const;

 private:
  std::string path_;
  std::unique_ptr<void, int (*)(void*)> handle_;
  ClassDesc* exporter_ = nullptr;
};

}  // namespace mapexport
