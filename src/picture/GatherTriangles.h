// The triangles of a model that a picture may show.
#pragma once

#include <vector>

#include "modelreader/ModelFile.h"
#include "picture/Camera.h"
#include "picture/FaceColours.h"
#include "picture/PageSpace.h"
#include "picture/Projection.h"
#include "picture/ScreenTriangle.h"

namespace mapexport {

/// The drawn triangles that show their front, the nearest first as far as that is cheap to find
/// out, and in an order that depends on the model only. Those with a corner that can't be shown are
/// left out. Normals of corners shade; where there are none, the normal of the face does.
/// `textured` gets the textures of those that have one.
std::vector<ScreenTriangle> GatherTriangles(const ModelFile& model, const PageSpace& space,
                                            const Camera& camera, const Projection& projection,
                                            const FaceColours& colours,
                                            std::vector<TexturedTriangle>& textured);

}  // namespace mapexport
