// A level as it is before each stage of its export.
#pragma once

#include <memory>
#include <string>

#include "GatheredScene.h"
#include "exporter/geometry/GeometryGroup.h"
#include "scene/Scene.h"

namespace mapexport {

inline constexpr float kWeldDistance = 0.2f;  ///< the initial one

/// Welds, with all that belongs to it.
void Weld(GeometryGroup& group);

/// Writes the model's file, from collision lists to the closed file. Returns whether that
/// succeeded.
bool WriteKobFile(ExportModel& model, const std::string& path);

struct LevelStages {
  explicit LevelStages(const std::string& sceneFile);

  /// A model just before its file is written; it is the running export's.
  std::unique_ptr<ExportModel> ModelToWrite() const;

  Scene scene;
  GatheredScene gathered;  ///< with its two-sided copies
  GeometryGroup welded;
  GeometryGroup cleaned;
  GeometryGroup prepared;  ///< with collision lists
};

}  // namespace mapexport
