// Loads the exporter's library, as the host does at its start.
#pragma once

#include <memory>
#include <string>

#include "host/Plugin.h"

namespace mapexport {

/// A loaded plug-in library with one scene exporter. A System must be installed as long as it
/// lives.
class PluginLibrary {
 public:
  /// Throws RunError when the file at `path` can't be loaded, speaks another version of the host's
  /// interface, or describes no scene exporter.
  explicit PluginLibrary(const std::string& path);
  ~PluginLibrary();
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  /// The library of this program: mapexport-plugin.so in the folder of the running program. Throws
  /// RunError when that folder can't be told.
  static std::string Path();

  /// A new exporter, to be destroyed before the library. Throws RunError when there is none to be
  /// had.
  std::unique_ptr<SceneExport> CreateExporter() const;

 private:
  std::string path_;
  std::unique_ptr<void, int (*)(void*)> handle_;
  ClassDesc* exporter_ = nullptr;
};

}  // namespace mapexport
