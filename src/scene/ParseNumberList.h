// A fast parser for the usual form of the number lists of meshes.
#pragma once

#include <vector>

#include "host/Mesh.h"

namespace mapexport {

/// Parses the JSON array of tuples that starts at `text` (its "[") and appends them to `list`:
/// points of three numbers, faces of three to five integers, texture faces of three. Returns what
/// follows the array. Returns null when the array is empty, wrong in any way, or has a number that
/// needs the slower parser; `list` is unspecified then. The text must end with a zero byte.
const char* ParseNumberList(const char* text, std::vector<Point3>& list);
const char* ParseNumberList(const char* text, std::vector<Face>& list);
const char* ParseNumberList(const char* text, std::vector<TVFace>& list);

}  // namespace mapexport
