// A scene as gathering leaves it.
#pragma once

#include "exporter/plugin/ExportModel.h"
#include "scene/HostScene.h"
#include "scene/Scene.h"

namespace mapexport {

/// What was gathered of a scene, which must outlive it, and the host that it was gathered from.
class GatheredScene {
 public:
  explicit GatheredScene(const Scene& scene);

  HostScene host;
  ExportModel model;
  GeometryGroup& group;  ///< of the model
};

}  // namespace mapexport
