// Any bytes as an image.

#include <cstdint>
#include <cstdlib>
#include <span>
#include <utility>

#include "images/DecodeImage.h"
#include "images/ShrinkImage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  try {
    Image image = DecodeImage(std::span(data, size));
    if (image.pixels.size() != std::size_t{4} * image.width * image.height) std::abort();
    if (image.pixels.size() > std::size_t{1} << 22) return 0;  // shrinking takes too long
    image = ShrinkImage(std::move(image), 64);
    if (image.width > 64 || image.height > 64 || image.width * image.height == 0) std::abort();
  } catch (const ImageError&) {
  }
  return 0;
}
