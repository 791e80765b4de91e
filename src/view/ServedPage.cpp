#include "view/ServedPage.h"

#include <cstddef>

#include "view/ViewerPage.h"

namespace mapexport {

std::optional<std::string> ServedPage(std::string page, std::string_view version) {
  const std::size_t end = page.rfind("</body>");
  const std::size_t policy = page.find(kViewerPolicy);
  if (end == page.npos || policy == page.npos || policy > end) return std::nullopt;
  std::string script = "<script data-version=\"";
  script.append(version).append("\">").append(kReloadScript).append("</script>\n");
  page.insert(end, script);
  page.replace(policy, kViewerPolicy.size(), kServedPolicy);
  return page;
}

}  // namespace mapexport
