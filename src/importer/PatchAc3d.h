// An AC3D file with the pictures that the import library understands.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

/// `text`, an AC3D file, without the texture lines of the dialect in which an object has several,
/// for skid marks, shadows and the like: the library takes the last one, and its name for "ERROR"
/// when it has no quotes. Left are those of the object's own picture. Empty when there are no
/// others. Cost: linear.
std::optional<std::string> PatchAc3d(std::string_view text);

}  // namespace mapexport
