// Reads the CXP material database.
#pragma once

namespace mapexport {

/// Reads the database that the options name and appends the names of its colour-keyed and
/// alpha-blended textures to the process's transparent textures. A file that can't be opened or
/// read is told to the debug log and changes nothing; a file that breaks off inside an entry keeps
/// what was read before.
void LoadCxp();

}  // namespace mapexport
