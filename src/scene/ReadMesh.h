// Reads the lists of meshes where a scene file has them as text.
#pragma once

#include "host/Point3.h"
#include "scene/CheckMesh.h"
#include "scene/JsonValue.h"

namespace mapexport {

/// Three numbers. Throws SceneError.
Point3 ReadPoint(JsonValue& value);

/// A mesh, checked. Throws SceneError.
FileMesh ReadMesh(JsonValue& value);

}  // namespace mapexport
