#include "importer/ase/AseLines.h"

namespace mapexport {

int AseDepthChange(std::string_view line) {
  int change = 0;
  bool isInText = false;
  for (const char c : line) {
    if (c == '"') isInText = !isInText;
    if (isInText) continue;
    change += c == '{' ? 1 : c == '}' ? -1 : 0;
  }
  return change;
}

}  // namespace mapexport
