// The output of `mapexport formats`.
#pragma once

#include <string>
#include <string_view>

namespace mapexport {

/// A table of the formats that scenes are read from, by extension, with how much of each was
/// preserved in measurements (cli/formats.txt). Formats of which no file could be read are left
/// out.
std::string FormatsText();

/// Whether that table has the extension, in lower case with its dot.
bool IsReadFormat(std::string_view extension);

}  // namespace mapexport
