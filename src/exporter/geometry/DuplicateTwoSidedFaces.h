// Gives faces of two-sided materials a back.
#pragma once

#include "exporter/geometry/GeometryGroup.h"
#include "exporter/materials/MaterialsList.h"

namespace mapexport {

/// Appends a reversed copy of every face whose material is two-sided, in face order: normal
/// negated, corners 1 and 2 exchanged, attributes shared with the front. The copies join the
/// surface sets of their fronts.
void DuplicateTwoSidedFaces(GeometryGroup& group, const MaterialsList& materials);

}  // namespace mapexport
