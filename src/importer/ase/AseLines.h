// What the readers of ASE files share.
#pragma once

#include <string_view>

namespace mapexport {

/// What the braces of `line` outside of texts add to the depth.
int AseDepthChange(std::string_view line);

}  // namespace mapexport
