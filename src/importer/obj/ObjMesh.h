// A host mesh from the faces of one part of an OBJ file.
#pragma once

#include <memory>
#include <vector>

#include "host/Mesh.h"
#include "importer/obj/ObjFile.h"

namespace mapexport {

struct LeftOut;

struct ObjMesh {
  std::shared_ptr<const Mesh> mesh;  ///< null when no triangle is left
  std::vector<int> partMaterials;    ///< host materials by the mesh's material ids, -1 for none
};

/// The mesh of `part`, triangles in the file's order of faces. Positions that are equal bit for bit
/// are one vertex, in the file's order of vertices; so are texture coordinates, in the order of
/// their first use. Corners without any have (0, 0, 0) where other corners of the part have some.
/// Triangles with a corner that isn't finite are left out and counted.
///
/// Smoothing groups are rebuilt from the normals; creases that they can't express are counted. The
/// file's groups count for faces without normals. In a part without any normals "off" is 0 and
/// group N has bit N; with a group beyond 31, each group has one of the bits 1 to 31
/// (AssignSmoothingBits). `hostMaterials` has the host's index for each of the file's material
/// names.
ObjMesh MakeObjMesh(const ObjFile& file, const ObjPart& part, const std::vector<int>& hostMaterials,
                    LeftOut& leftOut);

}  // namespace mapexport
