// A scene as gathering leaves it.
#pragma once

#include "exporter/plugin/ExportModel.h"
#include "scene/HostScene.h"
#include "scene/Scene.h"

namespace mapexport {

/// The result of gathering a scene, which must outlive it, and the host that gathered it.
class GatheredScene {
 public:
  explicit GatheredScene(const Scene& scene);

  HostScene host;
  ExportModel model;
  GeometryGroup& group;  ///< of the model
};

}  // namespace mapexport
