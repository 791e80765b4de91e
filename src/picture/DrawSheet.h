// Draws a sheet of a model: four views and the numbers.
#pragma once

#include <string>

#include "modelreader/ModelFile.h"
#include "picture/FaceColours.h"
#include "picture/PageSpace.h"
#include "picture/Picture.h"

namespace mapexport {

/// The least width and height of a sheet.
inline constexpr int kLeastSheetEdge = 200;

/// The four named views, each with its name, and a line below with `fileName` and lines with counts
/// and sizes. `size` is at least kLeastSheetEdge on each axis.
Picture DrawSheet(const ModelFile& model, const std::string& fileName, const PageSpace& space,
                  const FaceColours& colours, PictureSize size);

}  // namespace mapexport
