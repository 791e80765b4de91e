#include <algorithm>
#include <array>

#include "importer/Patches.h"
#include "importer/ase/ReadAse.h"
#include "importer/text/StatementLines.h"

namespace mapexport {
namespace {

constexpr std::string_view kGroup = "*GROUP";
constexpr std::string_view kShape = "*SHAPEOBJECT";
constexpr std::array<std::string_view, 7> kKnown{kGroup,         "*SCENE",        "*MATERIAL_LIST",
                                                 "*GEOMOBJECT",  "*HELPEROBJECT", "*LIGHTOBJECT",
                                                 "*CAMERAOBJECT"};

}  // namespace

std::optional<PatchedAse> PatchAse(std::string_view text) {
  PatchedAse patched;
  int depth = 0;
  int groups = 0;          // open ones; objects are directly in the innermost, or in none
  int cutDepth = -1;       // depth of the block that is being cut out; -1: none is
  std::size_t copied = 0;  // of the text
  std::size_t lineStart = 0;
  while (lineStart < text.size()) {
    const std::size_t lineEnd =
        std::min(text.find_first_of("\r\n", lineStart), text.size() - 1) + 1;
    const std::string_view line = text.substr(lineStart, lineEnd - lineStart);
    const int change = AseDepthChange(line);
    std::string_view rest = line.substr(0, line.find_first_of("\r\n"));
    const std::string_view key = TakeWord(rest);
    const bool opensBlock = cutDepth < 0 && depth == groups && change > 0 && key.starts_with('*');
    if (opensBlock && key == kGroup) {
      ++groups;
    } else if (opensBlock && std::ranges::find(kKnown, key) == kKnown.end()) {
      ++(key == kShape ? patched.shapes : patched.others);
      patched.text += text.substr(copied, lineStart - copied);
      cutDepth = depth;
    }
    depth = std::max(depth + change, 0);
    if (cutDepth >= 0) copied = lineEnd;
    if (depth <= cutDepth) cutDepth = -1;
    groups = std::min(groups, depth);
    lineStart = lineEnd;
  }
  if (patched.shapes + patched.others == 0) return std::nullopt;
  patched.text += text.substr(copied);
  return patched;
}

}  // namespace mapexport
