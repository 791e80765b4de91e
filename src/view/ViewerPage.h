// The page that shows a model, as the build bundled it from viewer/.
#pragma once

#include <string_view>

namespace mapexport {

/// The placeholder in the page that the model's block replaces, in base64. It occurs once.
inline constexpr std::string_view kModelMark = "@MODEL@";

/// A complete HTML document except for the model. Empty when the program was built without Node.js,
/// which bundles it. The build generates the file that defines it.
extern const std::string_view kViewerPage;

/// The content security policy in it, and that of the copy that is served, which has
/// kReloadScript too.
extern const std::string_view kViewerPolicy;
extern const std::string_view kServedPolicy;
extern const std::string_view kReloadScript;

}  // namespace mapexport
