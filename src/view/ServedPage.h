// The copy of a page that a local server serves.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

/// `page`, as WritePage wrote it, with a script that loads it again once the server has another
/// version, and a policy that lets it ask the server that it came from. Nothing when it is no such
/// page. `version` consists of letters, digits and "-".
std::optional<std::string> ServedPage(std::string page, std::string_view version);

}  // namespace mapexport
