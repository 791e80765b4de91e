// Make rules that list what an output depends on.
#pragma once

#include <span>
#include <string>

namespace mapexport {

/// "output: file file", with escapes that GNU make and ninja both understand, each file once and on
/// a separate line. Throws RunError for a path that either of them would not read back unchanged.
std::string DepFileText(const std::string& output, std::span<const std::string> files);

}  // namespace mapexport
