// Makes images smaller.
#pragma once

#include <cstdint>

#include "images/Image.h"

namespace mapexport {

/// `image` with at most `edge` pixels on its longer side, each the mean of those that it covers, in
/// whole numbers, so the same on every machine. Colours count by their alphas; those that are all
/// clear keep theirs, which a graphics card mixes into their neighbours.
Image ShrinkImage(Image image, std::uint32_t edge);

}  // namespace mapexport
