#include "exporter/plugin/BrowseForFile.h"

#include <array>
#include <string>

#include "host/System.h"

namespace mapexport {

std::optional<CStr> BrowseForFile(HWND owner, std::span<const char* const> extensions,
                                  const char* initialDirectory) {
  std::string display = "(.";
  std::string pattern;
  for (std::size_t i = 0; i < extensions.size(); ++i) {
    if (i > 0) {
      display += ",.";
      pattern += ';';
    }
    display += extensions[i];
    pattern.append("*.").append(extensions[i]);
  }
  display += ')';
  // Pairs of NUL-terminated texts; the empty text that ends them is the string's own NUL.
  const std::string filter = display + '\0' + pattern + '\0';

  std::array<char, 255> path{};
  OpenFileName request;
  request.owner = owner;
  request.filter = filter.c_str();
  request.initialDir = initialDirectory;
  request.file = path.data();
  request.maxFile = path.size();
  if (!TheSystem().GetOpenFileName(request)) return std::nullopt;
  return CStr(path.data());
}

}  // namespace mapexport
