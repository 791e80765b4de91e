#include "exporter/geometry/FaceFlags.h"

#include <string_view>

namespace mapexport {

std::uint32_t FaceFlagsOf(const INode* node) {
  std::uint32_t flags = 0;
  for (const FaceFlagKeyword& entry : kFaceFlagKeywords) {
    if (HasKeyword(entry.keyword, node)) flags |= entry.bit;
  }
  return flags;
}

bool HasKeyword(const char* keyword, const INode* node) {
  const std::string_view wanted(keyword);
  if (wanted.empty() || node == nullptr) return false;
  CStr buffer;
  node->GetUserPropBuffer(buffer);
  std::string_view text = buffer.View();
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\t\n\r");
    if (text.substr(0, end) == wanted) return true;
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return false;
}

}  // namespace mapexport
