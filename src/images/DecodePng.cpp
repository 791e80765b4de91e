#include <png.h>

#include "images/DecodeImage.h"

namespace mapexport {

Image DecodePng(std::span<const std::uint8_t> file) {
  struct Reader {
    png_image png{};
    Reader() = default;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { png_image_free(&png); }
  } reader;
  png_image& png = reader.png;
  png.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&png, file.data(), file.size()) == 0) {
    throw ImageError(png.message);
  }
  Image image = MakeImage(png.width, png.height);
  png.format = PNG_FORMAT_RGBA;
  png.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
  if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) {
    throw ImageError(png.message);
  }
  return image;
}

}  // namespace mapexport
