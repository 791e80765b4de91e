// A model file as a page of text for people.
#pragma once

#include <iosfwd>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// Writes what `model` holds: counts, a table of the materials, per group its bounds, the largest
/// batches, the surface sets with their flags' keywords, and how near its lists are to the limit of
/// 16-bit indices. Names are shown without control characters, a texture or set that
/// has no name as "-"; triangles are counted where they are drawn. Look at the stream's state
/// afterwards.
void WriteModelText(const ModelFile& model, std::ostream& out);

}  // namespace mapexport
