// Encodes images as PNG.
#pragma once

#include <string>

#include "images/Image.h"

namespace mapexport {

/// The bytes of a PNG file of `image`; the same for the same version of libpng.
std::string EncodePng(const Image& image);

}  // namespace mapexport
