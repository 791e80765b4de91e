// What the program is made of.
#pragma once

#include <string>

namespace mapexport {

/// The libraries and their versions: "fmt 9.1.0, simdjson 3.1.2, ...". Of shared libraries the
/// version that is loaded, where they tell it.
std::string LibraryVersions();

/// Lines for --version --verbose: the optional parts, and the libraries.
std::string BuiltInText();

}  // namespace mapexport
