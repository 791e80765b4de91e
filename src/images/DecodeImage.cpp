#include "images/DecodeImage.h"

#include <algorithm>
#include <string_view>

namespace mapexport {

void RequireImageSize(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) throw ImageError("it has no pixels");
  if (width > kMaxImageEdge || height > kMaxImageEdge || width * height > kMaxImagePixels) {
    throw ImageError("it is too large: at most 16384 pixels on an axis and 67108864 in all");
  }
}

Image MakeImage(std::uint64_t width, std::uint64_t height) {
  RequireImageSize(width, height);
  Image image{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}};
  image.pixels.resize(4 * width * height);
  for (std::size_t i = 3; i < image.pixels.size(); i += 4) image.pixels[i] = 255;
  return image;
}

Image DecodeImage(std::span<const std::uint8_t> file) {
  using std::string_view_literals::operator""sv;
  const auto begins = [file](std::string_view magic) {
    return file.size() >= magic.size() &&
           std::equal(magic.begin(), magic.end(), file.begin(), [](char wanted, std::uint8_t byte) {
             return static_cast<std::uint8_t>(wanted) == byte;
           });
  };
  if (begins("\x89PNG\r\n\x1a\n"sv)) return DecodePng(file);
  if (begins("\xff\xd8\xff"sv)) return DecodeJpeg(file);
  if (begins("DDS "sv)) return DecodeDds(file);
  if (begins("BM"sv)) return DecodeBmp(file);
  for (const std::string_view other : {"GIF8"sv, "RIFF"sv, "II*\0"sv, "MM\0*"sv, "8BPS"sv,
                                       "\xabKTX"sv, "#?RADIANCE"sv, "\x76\x2f\x31\x01"sv}) {
    if (begins(other)) throw ImageError("only PNG, JPEG, BMP, TGA and DDS are read");
  }
  return DecodeTga(file);  // which has no mark of its own
}

}  // namespace mapexport
