// Finds the libraries that the program loads at run time.
#pragma once

#include <string>

namespace mapexport {

/// The path of the library with that file name: in the program's folder (a build), or else in the
/// library folder (an installation). If it is in neither, the path in the program's folder, which
/// the error then names. Throws RunError.
std::string FindLibrary(const std::string& name);

}  // namespace mapexport
