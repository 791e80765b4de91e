// The user-defined property text of a foreign node.
#pragma once

#include <string>

struct aiNode;

namespace mapexport {

struct LibraryScene;

/// The user property text of `node` as far as the library has it, valid UTF-8, lines ended as in
/// the file. FBX: at most 1,023 bytes of what the modelling application stored. The library's other
/// formats have none.
std::string UserPropertyText(const LibraryScene& source, const aiNode& node);

}  // namespace mapexport
