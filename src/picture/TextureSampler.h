// The colours of textures on triangles.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "images/Image.h"
#include "picture/ScreenTriangle.h"

namespace mapexport {

/// An image, then halves of it, each of the one before.
using TextureLevels = std::vector<Image>;
/// By the names of textures.
using TextureImages = std::map<std::string, TextureLevels>;

/// A corner's texture coordinates, divided by its distance as its place on the screen is.
struct TextureCorner {
  double u = 0;
  double v = 0;
  double one = 1;
};

struct TexturedTriangle {
  const TextureLevels* levels = nullptr;
  std::array<TextureCorner, 3> corners;
};

/// Red, green, blue and alpha.
using Texel = std::array<std::uint32_t, 4>;

/// The texture's colour at a sample that `triangle` covers: a mean of the four nearest pixels of
/// the level of which a pixel is no smaller than a sample, in whole numbers. Its place is found in
/// doubles that every machine rounds alike.
Texel SampleTexture(const TexturedTriangle& texture, const ScreenTriangle& triangle, std::int32_t x,
                    std::int32_t y);

}  // namespace mapexport
