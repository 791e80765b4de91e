// Writes what changed between two models, for people and for programs.
#pragma once

#include <iosfwd>
#include <string>

#include "compare/CompareModels.h"

namespace mapexport {

// Check the stream's state after each. docs/diff.md describes what they write.

/// One line with the result, then tables of what differs. Names are made printable.
void WriteDifferenceText(const ModelDifference& difference, std::ostream& out);

/// One JSON document. `files` are the paths of the models.
void WriteDifferenceJson(const ModelDifference& difference, const Both<std::string>& files,
                         std::ostream& out);

}  // namespace mapexport
