// What is wrong with a file of one of the main formats that the import library refused.
#pragma once

#include <string>

namespace mapexport {

/// What breaks the file at `path`, by the rules of the format that its name or its first bytes
/// tell, with the place; empty when none is broken that is known here. For files in which the
/// library found nothing: it says little about a file that is cut or whose syntax is broken, and
/// takes some such file for one of no known format. Throws SceneError when the file can't be read.
std::string FileDefect(const std::string& path);

}  // namespace mapexport
