// The manual page of the program.
#pragma once

#include <string>

namespace mapexport {

/// mapexport(1) in the man macros of troff, made from the table of options that --help is made of.
/// Nothing in it depends on the day or the machine.
std::string ManPage();

}  // namespace mapexport
