#include "view/WritePage.h"

#include <cassert>
#include <ostream>
#include <string_view>

#include "view/Base64.h"
#include "view/ViewerPage.h"

namespace mapexport {

bool CanWritePage() {
  return !kViewerPage.empty();
}

void WritePage(const ModelFile& model, const ViewInfo& info, std::ostream& out) {
  const std::size_t mark = kViewerPage.find(kModelMark);
  assert(mark != std::string_view::npos);
  out << kViewerPage.substr(0, mark);
  WriteBase64(MakeModelBlock(model, info), out);
  out << kViewerPage.substr(mark + kModelMark.size());
}

}  // namespace mapexport
