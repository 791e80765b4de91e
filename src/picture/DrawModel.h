// Draws a model.
#pragma once

#include <cstddef>

#include "modelreader/ModelFile.h"
#include "picture/Camera.h"
#include "picture/FaceColours.h"
#include "picture/PageSpace.h"
#include "picture/Picture.h"

namespace mapexport {

inline constexpr Rgb kBackground{244, 245, 247};

/// The largest width and height of a picture.
inline constexpr int kMaxPictureEdge = 4096;

/// The drawn triangles of a model from one camera, on the background, or a note that there are
/// none. The same pixels on every machine. Back sides are not shown, as in the page of `view`.
Picture DrawModel(const ModelFile& model, const PageSpace& space, const FaceColours& colours,
                  const Camera& camera, PictureSize size);

}  // namespace mapexport
