#include "picture/TextureSampler.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

namespace mapexport {
namespace {

struct TexturePlace {
  double u = 0;
  double v = 0;
};

/// Nothing where the triangle's plane is behind the eye.
std::optional<TexturePlace> PlaceAt(const TexturedTriangle& texture, const ScreenTriangle& triangle,
                                    std::int32_t x, std::int32_t y) {
  const auto& [a, b, c] = triangle.corners;
  const ScreenPoint at{x, y, 0};
  const std::array shares{DoubleArea(b, c, at), DoubleArea(c, a, at), DoubleArea(a, b, at)};
  TextureCorner sum{0, 0, 0};
  for (std::size_t i = 0; i < 3; ++i) {
    const auto share = static_cast<double>(shares[i]);
    sum.u += share * texture.corners[i].u;
    sum.v += share * texture.corners[i].v;
    sum.one += share * texture.corners[i].one;
  }
  if (!(sum.one > 0)) return std::nullopt;
  return TexturePlace{sum.u / sum.one, sum.v / sum.one};
}

/// How many pixels of the image a step to the next sample goes over.
double StepOver(const Image& image, const TexturePlace& from,
                const std::optional<TexturePlace>& to) {
  if (!to) return std::numeric_limits<double>::infinity();
  return std::max(std::abs(to->u - from.u) * image.width, std::abs(to->v - from.v) * image.height);
}

constexpr std::int64_t kParts = 256;  ///< of a pixel

struct Neighbours {
  std::array<std::size_t, 2> pixels;
  std::array<std::uint32_t, 2> shares;  ///< in kParts
};

/// The two pixels of a row or column of `size` that are nearest; it repeats.
Neighbours NeighboursOf(double place, std::uint32_t size) {
  constexpr double kFarthest = 1e6;
  const double within = std::abs(place) <= kFarthest ? place : 0;  // also when it is no number
  const auto parts = static_cast<std::int64_t>(std::floor(within * size * kParts)) - kParts / 2;
  const auto wrapped = [size](std::int64_t pixel) {
    const std::int64_t rest = pixel % std::int64_t{size};
    return static_cast<std::size_t>(rest < 0 ? rest + size : rest);
  };
  const std::int64_t first = parts >> 8;
  const auto share = static_cast<std::uint32_t>(parts & (kParts - 1));
  return {{wrapped(first), wrapped(first + 1)},
          {static_cast<std::uint32_t>(kParts) - share, share}};
}

}  // namespace

Texel SampleTexture(const TexturedTriangle& texture, const ScreenTriangle& triangle, std::int32_t x,
                    std::int32_t y) {
  const TexturePlace at = PlaceAt(texture, triangle, x, y).value_or(TexturePlace{});
  const TextureLevels& levels = *texture.levels;
  double step =
      std::max(StepOver(levels[0], at, PlaceAt(texture, triangle, x + kPlacesPerSample, y)),
               StepOver(levels[0], at, PlaceAt(texture, triangle, x, y + kPlacesPerSample)));
  std::size_t level = 0;
  for (; level + 1 < levels.size() && !(step <= 1); ++level) step /= 2;
  const Image& image = levels[level];
  const Neighbours columns = NeighboursOf(at.u, image.width);
  const Neighbours rows = NeighboursOf(at.v, image.height);
  std::array<std::uint64_t, 4> sums{};
  for (std::size_t i = 0; i < 4; ++i) {
    const std::uint8_t* const pixel = image.At(columns.pixels[i % 2], rows.pixels[i / 2]);
    const std::uint64_t share =
        std::uint64_t{columns.shares[i % 2]} * rows.shares[i / 2] * pixel[3];
    for (std::size_t k = 0; k < 3; ++k) sums[k] += share * pixel[k];
    sums[3] += share;
  }
  Texel texel{};
  if (sums[3] == 0) return texel;
  for (std::size_t k = 0; k < 3; ++k) {
    texel[k] = static_cast<std::uint32_t>((sums[k] + sums[3] / 2) / sums[3]);
  }
  texel[3] = static_cast<std::uint32_t>((sums[3] + kParts * kParts / 2) / (kParts * kParts));
  return texel;
}

}  // namespace mapexport
