// Making host meshes of meshes as foreign formats store them, as a benchmark.
#pragma once

#include "scene/Scene.h"

namespace mapexport {

/// Registers "rebuild": shared positions and texture vertices, smoothing groups and material ids of
/// all meshes of the scene, from the form that glTF has.
void RegisterRebuilding(const Scene& scene);

}  // namespace mapexport
