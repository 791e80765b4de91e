// What `mapexport formats` prints.
#pragma once

#include <string>

namespace mapexport {

/// A table of the formats that scenes are read from, by extension, with how well: what was measured
/// on the model files of a package, as cli/formats.txt keeps it. Formats of which no file could be
/// read are left out.
std::string FormatsText();

}  // namespace mapexport
