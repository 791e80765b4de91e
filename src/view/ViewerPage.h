// The page that shows a model, as the build bundled it from viewer/.
#pragma once

#include <string_view>

namespace mapexport {

/// What stands in the page where the model's block belongs, in base64. It is there once.
inline constexpr std::string_view kModelMark = "@MODEL@";

/// A whole HTML document but for the model. Empty when the program was built without Node.js, which
/// bundles it. The build makes the file that defines it.
extern const std::string_view kViewerPage;

}  // namespace mapexport
