// Converts a module's cursor to Qt's.
#pragma once

#include <QCursor>

#include "host/Resources.h"

namespace mapexport {

/// `image` for a display with `pixelRatio` display pixels per device-independent one: it has the
/// same size and sharpness on every display.
QCursor ToQtCursor(const CursorImage& image, double pixelRatio);

}  // namespace mapexport
