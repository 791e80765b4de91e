// A triangle as the rasteriser draws it.
#pragma once

#include <array>
#include <cstdint>

#include "picture/Picture.h"

namespace mapexport {

/// Samples per pixel on each axis.
inline constexpr int kSamplesPerPixel = 2;

// Positions on the screen are whole numbers of a 64th of a sample, y pointing down; a sample is in
// the middle of its square.
inline constexpr int kPlaceBits = 6;
inline constexpr std::int32_t kPlacesPerSample = 1 << kPlaceBits;
inline constexpr std::int32_t kHalfSample = kPlacesPerSample / 2;
/// No position is further than this from the picture's middle, which is less than half of that from
/// every corner of the largest picture.
inline constexpr std::int32_t kGuard = 1 << 14;  ///< in samples

/// Depths are from 0, the nearest, to this.
inline constexpr std::int32_t kFarthestDepth = 1 << 29;

/// Light is a factor of a colour, in units of 1 / kFullLight.
inline constexpr std::uint32_t kFullLight = 1 << 14;

struct ScreenPoint {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t depth = 0;

  bool operator==(const ScreenPoint&) const = default;
};

struct ScreenTriangle {
  std::array<ScreenPoint, 3> corners;  ///< clockwise on the screen, area above 0
  std::array<std::uint16_t, 3> light{};
  Rgb colour{};
  /// Into a list of those with a texture.
  std::uint32_t textured = kNoTexture;
  bool transparent = false;  ///< its texture has alphas

  static constexpr std::uint32_t kNoTexture = UINT32_MAX;
};

/// Twice the area of the triangle from `a` to `b` to `c`, below 0 when it is counter-clockwise.
inline std::int64_t DoubleArea(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c) {
  return std::int64_t{b.x - a.x} * (c.y - a.y) - std::int64_t{c.x - a.x} * (b.y - a.y);
}

}  // namespace mapexport
