// Reads the CXP material database.
#pragma once

#include <istream>

#include "exporter/base/TextureNames.h"

namespace mapexport {

/// Reads the database that the options name and appends the names of its colour-keyed and
/// alpha-blended textures to the process's transparent textures. A file that can't be opened or
/// read is reported to the debug log and changes nothing. A file that breaks off inside an entry
/// counts up to there.
void LoadCxp();

/// Appends the name of each entry's texture to `transparentTextures`, once for every "colorkey" and
/// every "alphablend" of the entry: lower case, without directories (backslashes) and extension.
///
/// The search for entries ends when the stream is no longer good: entries on a last line without a
/// line feed are lost when the token before that line ended its own line. A stream that breaks off
/// inside an entry ends the reading silently; what was appended stays. Linear in the text.
void ReadCxp(std::istream& input, TextureNames& transparentTextures);

}  // namespace mapexport
