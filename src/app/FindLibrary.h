// Finds the libraries that the program loads at run time.
#pragma once

#include <string>

namespace mapexport {

/// The path of the library with that file name: in the program's folder (a build), or else in the
/// library folder (an installation). If it is in neither, the path in the program's folder, which
/// the error then names. Where there is no /proc, the program must still be in the current folder
/// in which it was started, if it was started by a relative path. Throws RunError.
std::string FindLibrary(const std::string& name);

}  // namespace mapexport
