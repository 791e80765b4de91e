// Reads the statements of an OBJ file.
#pragma once

#include <string>
#include <string_view>

#include "importer/obj/ObjFile.h"

namespace mapexport {

/// The content of an OBJ file with this text. Objects and groups become parts: a face belongs to
/// the group in force, or to the object when no group was named since; a part that is named again
/// is continued. Faces without either belong to "defaultobject". Statements that mean nothing here
/// are skipped. Throws SceneError "PATH: line N: ..." for a number or an index that can't be read,
/// and for an index that is 0 or beyond its list. Cost: linear.
ObjFile ReadObjFile(const std::string& path, std::string_view text);

}  // namespace mapexport
