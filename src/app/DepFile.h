// The rule of a make file that says what an output depends on.
#pragma once

#include <span>
#include <string>

namespace mapexport {

/// "output: file file", with the escapes that make (and ninja) understands, each file once and on a
/// line of its own. Throws RunError for a path that no such rule can hold, having nothing that
/// stands for one of its characters.
std::string DepFileText(const std::string& output, std::span<const std::string> files);

}  // namespace mapexport
