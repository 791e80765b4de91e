// What an OBJ file holds, and its reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "host/Point3.h"

namespace mapexport {

inline constexpr std::uint32_t kNoObjIndex = std::numeric_limits<std::uint32_t>::max();

/// Indices into the lists of the file, from 0; kNoObjIndex for a texture vertex or normal that
/// isn't given.
struct ObjCorner {
  std::uint32_t position = 0;
  std::uint32_t texture = kNoObjIndex;
  std::uint32_t normal = kNoObjIndex;
};

/// A polygon of three or more corners.
struct ObjFace {
  std::size_t firstCorner = 0;  ///< index into ObjFile::corners
  std::uint32_t cornerCount = 0;
  std::uint32_t smoothing = 0;  ///< number of the smoothing group, 0: off
  int material = -1;            ///< index into ObjFile::materialNames, -1: none in force
};

/// The faces of one object, or of one group outside of objects, in the file's order; there may be
/// none.
struct ObjPart {
  std::string name;  ///< bytes of the file
  std::vector<ObjFace> faces;
};

/// All indices are in range. Numbers may not be finite.
struct ObjFile {
  std::vector<Point3> positions;
  std::vector<Point3> textureVertices;  ///< v up; w is 0 where it isn't given
  std::vector<Point3> normals;
  std::vector<ObjCorner> corners;
  std::vector<ObjPart> parts;                  ///< in the order of their first appearance
  std::vector<std::string> materialNames;      ///< that faces use: bytes of the file, each once
  std::vector<std::string> materialLibraries;  ///< the rest of each mtllib statement, each once
  std::size_t points = 0;
  std::size_t lines = 0;           ///< segments of lines
  std::size_t brokenPolygons = 0;  ///< faces without a corner
  std::size_t curves = 0;          ///< free-form curves and surfaces
  std::size_t colours = 0;         ///< vertices with a colour
  std::size_t innerGroups = 0;     ///< groups within objects: their names are lost
};

/// The content of an OBJ file with this text. Objects become parts, with all groups
/// within them, and so do groups outside of objects; a part that is named again is continued. Faces
/// without either belong to "defaultobject". Unknown statements are skipped.
/// Throws SceneError "PATH: line N: ..." for a number or an index that can't be read, and for an
/// index that is 0 or beyond its list. Cost: linear.
ObjFile ReadObjFile(const std::string& path, std::string_view text);

}  // namespace mapexport
