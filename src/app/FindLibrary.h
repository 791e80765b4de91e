// Where the libraries are that the program loads while it runs.
#pragma once

#include <string>

namespace mapexport {

/// The path of the library with that file name: beside the program, as it is built, else in the
/// library folder of an installed program. A library that is in neither is looked for beside the
/// program, so that the error names that place. Throws RunError.
std::string FindLibrary(const std::string& name);

}  // namespace mapexport
