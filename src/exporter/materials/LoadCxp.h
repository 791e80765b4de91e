// Reads the CXP material database.
#pragma once

#include <istream>

#include "exporter/base/TextureNames.h"

namespace mapexport {

/// Reads the database that the options name and appends the names of its colour-keyed and
/// alpha-blended textures to the process's transparent textures. A file that can't be opened or
/// read is told to the debug log and changes nothing; a file that breaks off inside an entry keeps
/// what was read before.
void LoadCxp();

/// Appends the name of each entry's texture to `transparentTextures`, once for every "colorkey" and
/// every "alphablend" of the entry: lower case, without directories (backslashes) and extension.
///
/// Entries are looked for while the stream is good, so what stands on a last line without a line
/// feed is lost when the token before that line ended with its own line. A stream that breaks off
/// inside an entry ends the reading quietly; what was appended stays. The time is linear in the
/// text.
void ReadCxp(std::istream& input, TextureNames& transparentTextures);

}  // namespace mapexport
