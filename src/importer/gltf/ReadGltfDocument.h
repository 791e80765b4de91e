// The JSON of a glTF file.
#pragma once

#include <string>
#include <string_view>

#include "importer/gltf/GltfDocument.h"

namespace mapexport {

/// The document `json` of the file at `path`. What is not used is checked for its syntax alone.
/// Throws SceneError for broken JSON, with line and column, and for values of the wrong kind, with
/// their places (`nodes[3].mesh`).
GltfDocument ReadGltfDocument(const std::string& path, std::string_view json);

/// Checks that each index in `document` is in range, that each node is the child of one other at
/// most, and that none is below itself; sets the parents. A required extension must be one that is
/// understood or that says nothing about geometry. Throws SceneError, with the place. Cost: linear.
void CheckGltfDocument(const std::string& path, GltfDocument& document);

}  // namespace mapexport
