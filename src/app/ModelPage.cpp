#include "app/ModelPage.h"

#include <fmt/format.h>

#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"
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
                                              int coordinateSystem) {
  if (ModelBlockBytes(model) > kMaxModelBlockBytes) {
    throw RunError(fmt::format("{}: too large for a page: its lists take more than {} MiB", path,
                               kMaxModelBlockBytes >> 20));
  }
  return [&model, info = ViewInfo{NamePart(path), coordinateSystem}](std::ostream& out) {
    WritePage(model, info, out);
  };
}

std::unique_ptr<OutputPlace> MakePage(const OutputTarget& target, const OutputPlace& model,
                                      const RunReport& report) {
  const ModelReadResult read = ReadModelFile(model.File(), *report.layout);
  if (!read.Sound()) throw RunError(report.output + ": can't be read for its page");
  const auto given = report.options.find("coordinates");
  const int coordinateSystem =
      given == report.options.end()
          ? 0
          : ParseRow(kCoordinateSystems, given->second.front()).value_or(0);
  return std::make_unique<OutputPlace>(target,
                                       PageWriter(read.model, report.output, coordinateSystem));
}

}  // namespace mapexport
