#include "images/EncodePng.h"

#include <new>

#include <png.h>

namespace mapexport {

std::string EncodePng(const Image& image) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = image.width;
  png.height = image.height;
  png.format = PNG_FORMAT_RGBA;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
  std::string bytes(size, '\0');
  if (png_image_write_to_memory(&png, bytes.data(), &size, 0, image.pixels.data(), 0, nullptr) ==
      0) {
    throw std::bad_alloc();  // what else the library can fail at
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace mapexport
