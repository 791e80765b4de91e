// The path of a foreign material's picture as the host stores it.
#pragma once

#include <string>

struct aiString;

namespace mapexport {

struct LibraryScene;

/// The path `stored` of a material, valid UTF-8. The percent signs of glTF URIs are decoded. A
/// picture inside the scene file ("*0") has the file name that it was given there, else
/// "embedded0.png" and the like. Components "." and "NAME\.." are resolved and leading ".."
/// dropped, since the host's users read the path from the first dot back; both separators are kept
/// as they are.
std::string TexturePath(const LibraryScene& source, const aiString& stored);

}  // namespace mapexport
