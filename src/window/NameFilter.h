// The filter of a file-open box as Qt takes it.
#pragma once

#include <QString>

#include "console/Presenter.h"

namespace mapexport {

/// "DISPLAY (PATTERN PATTERN)"; every file when the box has no pattern.
QString ToNameFilter(const FileBox& box);

}  // namespace mapexport
