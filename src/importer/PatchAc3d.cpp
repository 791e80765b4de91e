#include <algorithm>
#include <cstddef>

#include "importer/Patches.h"
#include "importer/text/StatementLines.h"

namespace mapexport {
namespace {

/// Whether `line` names a picture, but not the object's own: `texture empty_texture shad`,
/// `texture "shadow.rgb" tiled`. The own one is in quotes, with "base" behind it or nothing.
bool IsOtherTexture(std::string_view line) {
  if (TakeWord(line) != "texture") return false;
  if (!line.starts_with('"')) return true;
  const std::size_t end = line.find('"', 1);
  if (end == std::string_view::npos) return false;
  line.remove_prefix(end + 1);
  const std::string_view use = TakeWord(line);
  return !use.empty() && use != "base";
}

}  // namespace

std::optional<std::string> PatchAc3d(std::string_view text) {
  std::string patched;
  bool isChanged = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view line = text.substr(0, end);
    const bool isOther = IsOtherTexture(line.substr(0, line.find_first_of("\r\n")));
    isChanged = isChanged || isOther;
    if (!isOther) patched += line;
    text.remove_prefix(end);
  }
  if (!isChanged) return std::nullopt;
  return patched;
}

}  // namespace mapexport
