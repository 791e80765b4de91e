// A model file as a JSON document.
#pragma once

#include <iosfwd>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// Writes all that `model` holds as one JSON document, which docs/inspect-json.md describes. With
/// `summary` the long lists are left out and their counts given. Floats are the shortest decimal
/// numbers that read back as the same 32-bit float; those that are not finite are the texts "NaN",
/// "Infinity" and "-Infinity". Bytes of names that are not UTF-8 become U+FFFD. Look at the
/// stream's state afterwards.
void WriteModelJson(const ModelFile& model, bool summary, std::ostream& out);

}  // namespace mapexport
