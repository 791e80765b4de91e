// The paths of foreign materials' pictures, as the host stores them.
#pragma once

#include <string>
#include <string_view>

struct aiString;

namespace mapexport {

struct LibraryScene;

/// The path `stored` of a material, valid UTF-8 and normalised. The percent signs of glTF URIs are
/// decoded. A picture inside the scene file ("*0") has the file name that it was given there, else
/// "embedded0.png" and the like.
std::string TexturePath(const LibraryScene& source, const aiString& stored);

/// `path` with the components "." and "NAME\.." resolved and leading ".." dropped, since the host's
/// users read the path from the first dot back. Both separators are kept as they are.
std::string NormalisedTexturePath(std::string_view path);

}  // namespace mapexport
