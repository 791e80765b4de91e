// The HTML page that shows a model file in 3D.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "app/export/RunReport.h"
#include "modelreader/ModelFile.h"
#include "output/OutputPlace.h"
#include "output/OutputTarget.h"
#include "view/ModelBlock.h"

namespace mapexport {

/// Throws RunError, which begins with `who`, when this program was built without the page.
void RequirePageBuilt(const std::string& who);

/// Where the page of the model file at `model` goes unless a path is given: beside it.
std::string PagePath(const std::string& model);

/// What writes the page of `model`, which is or will be the file at `path`. Throws RunError when
/// there is too much for a page.
std::function<void(std::ostream&)> PageWriter(const ModelFile& model, const std::string& path,
                                              ViewInfo info);

/// The page of the model that is to be placed by `model` and that `report` is about. Throws
/// RunError.
std::unique_ptr<OutputPlace> MakePage(const OutputTarget& target, const OutputPlace& model,
                                      const RunReport& report);

}  // namespace mapexport
