#include "images/ShrinkImage.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace mapexport {

Image ShrinkImage(Image image, std::uint32_t edge) {
  const std::uint64_t longer = std::max(image.width, image.height);
  if (longer <= edge) return image;
  const auto scaled = [&](std::uint64_t side) {
    return std::max(std::uint64_t{1}, (side * edge + longer / 2) / longer);
  };
  Image small = MakeImage(scaled(image.width), scaled(image.height));
  const auto first = [](std::size_t at, std::uint64_t from, std::uint64_t to) {
    return static_cast<std::size_t>(at * from / to);
  };
  for (std::size_t y = 0; y < small.height; ++y) {
    const std::size_t bottom = first(y + 1, image.height, small.height);
    for (std::size_t x = 0; x < small.width; ++x) {
      const std::size_t right = first(x + 1, image.width, small.width);
      std::array<std::uint64_t, 4> sums{};
      std::array<std::uint64_t, 3> plain{};
      std::uint64_t count = 0;
      for (std::size_t fromY = first(y, image.height, small.height); fromY < bottom; ++fromY) {
        for (std::size_t fromX = first(x, image.width, small.width); fromX < right; ++fromX) {
          const std::uint8_t* const pixel = image.At(fromX, fromY);
          for (std::size_t k = 0; k < 3; ++k) {
            plain[k] += pixel[k];
            sums[k] += std::uint64_t{pixel[k]} * pixel[3];
          }
          sums[3] += pixel[3];
          ++count;
        }
      }
      std::uint8_t* const to = small.At(x, y);
      for (std::size_t k = 0; k < 3; ++k) {
        const std::uint64_t sum = sums[3] == 0 ? plain[k] : sums[k];
        const std::uint64_t weight = sums[3] == 0 ? count : sums[3];
        to[k] = static_cast<std::uint8_t>((sum + weight / 2) / weight);
      }
      to[3] = static_cast<std::uint8_t>((sums[3] + count / 2) / count);
    }
  }
  return small;
}

}  // namespace mapexport
