// The JSON of scene files in both forms.
#pragma once

#include <functional>
#include <iosfwd>

namespace mapexport {

class JsonStream;
struct Mesh;
struct Scene;

/// Writes the value of a member "mesh".
using MeshWriter = std::function<void(JsonStream& json, const Mesh& mesh)>;

void WriteSceneTree(const Scene& scene, const MeshWriter& writeMesh, std::ostream& out);

}  // namespace mapexport
