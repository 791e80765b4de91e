// The SHA-256 of a file.
#pragma once

#include <string>

namespace mapexport {

/// In 64 hexadecimal digits, lower case. Throws RunError when the file can't be read or
/// is not a regular one.
std::string Sha256OfFile(const std::string& path);

}  // namespace mapexport
