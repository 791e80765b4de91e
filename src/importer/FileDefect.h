// Finds the defect of a file that the import library refused, for the main formats.
#pragma once

#include <string>

namespace mapexport {

/// The defect of the file at `path` and its place, by the rules of the format that its name or its
/// first bytes show; empty when no defect is found. The library's own message says little about a
/// file that is cut or has broken syntax, and takes some for files of no known format. Throws
/// SceneError when the file can't be read.
std::string FileDefect(const std::string& path);

}  // namespace mapexport
