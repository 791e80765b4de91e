// A module's cursor as one of Qt's.
#pragma once

#include <QCursor>

#include "host/Resources.h"

namespace mapexport {

/// `image` for a display with `pixelRatio` of its pixels to a device-independent one: as large to
/// the eye, and as sharp, as on any other.
QCursor ToQtCursor(const CursorImage& image, double pixelRatio);

}  // namespace mapexport
