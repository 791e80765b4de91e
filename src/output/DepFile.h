// The rule of a make file that says what an output depends on.
#pragma once

#include <span>
#include <string>

namespace mapexport {

/// "output: file file", with escapes that GNU make and ninja both understand, each file once and on
/// a line of its own. Throws RunError for a path that one of the two would not read back.
std::string DepFileText(const std::string& output, std::span<const std::string> files);

}  // namespace mapexport
