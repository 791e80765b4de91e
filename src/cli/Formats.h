// The output of `mapexport formats`.
#pragma once

#include <string>

namespace mapexport {

/// A table of the formats that scenes are read from, by extension, with how much of each was
/// preserved in measurements (cli/formats.txt). Formats of which no file could be read are left
/// out.
std::string FormatsText();

}  // namespace mapexport
