// The number lists of meshes, parsed quickly as long as nothing about them is unusual.
#pragma once

#include <vector>

#include "host/Mesh.h"

namespace mapexport {

/// Parses the JSON array of tuples that starts at `text` (its "[") and appends them to `list`:
/// points of three numbers, faces of three to five integers, texture faces of three. Returns what
/// follows the array, or null when it is empty, wrong in any way, or holds a number that takes a
/// second look; `list` is of no use then. The text must end with a zero byte.
const char* ParseNumberList(const char* text, std::vector<Point3>& list);
const char* ParseNumberList(const char* text, std::vector<Face>& list);
const char* ParseNumberList(const char* text, std::vector<TVFace>& list);

}  // namespace mapexport
