// Decodes image files.
#pragma once

#include <cstdint>
#include <span>

#include "images/Image.h"

namespace mapexport {

/// The image in the bytes of a file: PNG, JPEG, BMP, TGA or DDS, which its bytes tell, not its
/// name. Throws ImageError. Takes any bytes, but libraries read PNG and JPEG: call it in a confined
/// process.
Image DecodeImage(std::span<const std::uint8_t> file);

// The same for one format. `file` may hold anything.
Image DecodePng(std::span<const std::uint8_t> file);
Image DecodeJpeg(std::span<const std::uint8_t> file);
/// Not run-length encoded.
Image DecodeBmp(std::span<const std::uint8_t> file);
Image DecodeTga(std::span<const std::uint8_t> file);
/// The first level of a plain texture: BC1, BC2, BC3, or 24 or 32 bits per pixel.
Image DecodeDds(std::span<const std::uint8_t> file);

}  // namespace mapexport
