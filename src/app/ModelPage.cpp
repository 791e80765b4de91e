#include "app/ModelPage.h"

#include <utility>

#include <fmt/format.h>

#include "modelreader/ReadModelFile.h"
#include "system/FileIdentity.h"
#include "system/RunError.h"
#include "view/WritePage.h"

namespace mapexport {

void RequirePageBuilt(const std::string& who) {
  if (CanWritePage()) return;
  throw RunError(who +
                 ": this mapexport was built without the page; install Node.js and npm and build "
                 "it again");
}

std::string PagePath(const std::string& model) {
  return model + ".html";
}

std::function<void(std::ostream&)> PageWriter(const ModelFile& model, const std::string& path,
                                              ViewInfo info) {
  std::uint64_t bytes = ModelBlockBytes(model);
  if (info.comparison != nullptr) bytes += ModelBlockBytes(*info.comparison->models[1]);
  if (bytes > kMaxModelBlockBytes) {
    throw RunError(fmt::format("{}: too large for a page: {} take more than {} MiB", path,
                               info.comparison != nullptr ? "the lists of both files" : "its lists",
                               kMaxModelBlockBytes >> 20));
  }
  return [&model, info = std::move(info)](std::ostream& out) { WritePage(model, info, out); };
}

std::unique_ptr<OutputPlace> MakePage(const OutputTarget& target, const OutputPlace& model,
                                      const RunReport& report) {
  const ModelReadResult read = ReadModelFile(model.File(), *report.layout);
  if (!read.Sound()) throw RunError(report.output + ": can't be read for its page");
  return std::make_unique<OutputPlace>(
      target, PageWriter(read.model, report.output,
                         {.fileName = NamePart(report.output),
                          .coordinateSystem = CoordinateSystemOf(report)}));
}

}  // namespace mapexport
