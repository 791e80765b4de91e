#include "app/LoadScene.h"

#include <utility>

#include "importer/ImportScene.h"
#include "scene/SceneFile.h"

namespace mapexport {

Scene LoadScene(const std::string& path, const Messages& messages) {
  if (IsSceneFile(path)) return ReadSceneFile(path);
  ImportedScene imported = ImportScene(path);
  for (const std::string& warning : imported.warnings) messages.Warning(warning);
  return std::move(imported.scene);
}

}  // namespace mapexport
