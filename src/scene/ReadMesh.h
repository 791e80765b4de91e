// Reads the lists of meshes where a scene file has them as text.
#pragma once

#include "host/Mesh.h"
#include "host/Point3.h"
#include "scene/JsonValue.h"

namespace mapexport {

/// Three numbers. Throws SceneError.
Point3 ReadPoint(JsonValue& value);

/// A mesh, checked. Throws SceneError.
Mesh ReadMesh(JsonValue& value);

}  // namespace mapexport
