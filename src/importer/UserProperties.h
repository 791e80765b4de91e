// The user-defined property text of a foreign node.
#pragma once

#include <string>

struct aiNode;

namespace mapexport {

struct LibraryScene;

/// The text that the host would hold for `node`, valid UTF-8, lines ended as in the file. FBX: what
/// the modelling application stored as the node's user properties. glTF: the member
/// `userProperties` of the node's `extras`, then a line for each member that is `true`: its name.
/// Other formats have none.
std::string UserPropertyText(const LibraryScene& source, const aiNode& node);

}  // namespace mapexport
