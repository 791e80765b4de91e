// Writes what a model file holds, for programs and for people.
#pragma once

#include <iosfwd>

#include "modelreader/ModelFile.h"

namespace mapexport {

// Check the stream's state after each.

/// Writes all that `model` holds as one JSON document, which docs/inspect-json.md describes. With
/// `summary` the long lists are left out and their counts given. Floats are the shortest decimal
/// numbers that read back as the same 32-bit float; those that are not finite are the texts "NaN",
/// "Infinity" and "-Infinity". Bytes of names that are not UTF-8 become U+FFFD.
void WriteModelJson(const ModelFile& model, bool summary, std::ostream& out);

/// Writes what `model` holds: counts, a table of the materials, per group its bounds, the largest
/// batches, the surface sets with their flags' keywords, and how near its lists are to the limit of
/// 16-bit indices. Names are made printable; a texture or set without a name is "-".
/// Triangles are counted where they are drawn. What Advise finds is the last section.
void WriteModelText(const ModelFile& model, std::ostream& out);

struct ModelParts {
  bool batches = false;
  bool materials = false;
  bool sets = false;
};

/// Writes only these tables of the text, with all their rows.
void WriteModelParts(const ModelFile& model, const ModelParts& parts, std::ostream& out);

}  // namespace mapexport
