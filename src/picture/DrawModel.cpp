#include "picture/DrawModel.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "picture/DrawText.h"
#include "picture/GatherTriangles.h"
#include "picture/Projection.h"
#include "picture/Rasteriser.h"
#include "picture/ScreenTriangle.h"

namespace mapexport {
namespace {

constexpr std::string_view kNone = "no triangle to be seen";
constexpr int kWideText = 400;  ///< from this width on, characters are twice as large

using Sum = std::array<std::uint32_t, 3>;

/// Adds `times` the triangle's colour with the light at a place on the screen.
void AddShade(const ScreenTriangle& triangle, std::int32_t x, std::int32_t y, std::uint32_t times,
              Sum& sum) {
  const auto& [a, b, c] = triangle.corners;
  const ScreenPoint at{x, y, 0};
  const std::int64_t area = DoubleArea(a, b, c);
  const std::int64_t ofA = DoubleArea(b, c, at);
  const std::int64_t ofB = DoubleArea(c, a, at);
  const std::int64_t ofC = area - ofA - ofB;
  const std::int64_t light =
      (triangle.light[0] * ofA + triangle.light[1] * ofB + triangle.light[2] * ofC) / area;
  for (std::size_t i = 0; i < 3; ++i) {
    const auto value =
        (triangle.colour[i] * static_cast<std::uint32_t>(light) + kFullLight / 2) / kFullLight;
    sum[i] += times * std::min(std::uint32_t{255}, value);
  }
}

constexpr std::uint32_t kSamples = kSamplesPerPixel * kSamplesPerPixel;

Rgb PixelOf(const Rasteriser& rasteriser, const std::vector<ScreenTriangle>& triangles, int x,
            int y) {
  std::array<std::uint32_t, kSamples> ids{};
  const int firstX = x * kSamplesPerPixel;
  const int firstY = y * kSamplesPerPixel;
  bool same = true;
  for (std::uint32_t i = 0; i < kSamples; ++i) {
    ids[i] = rasteriser.At(firstX + static_cast<int>(i) % kSamplesPerPixel,
                           firstY + static_cast<int>(i) / kSamplesPerPixel);
    same = same && ids[i] == ids[0];
  }
  if (same && ids[0] == Rasteriser::kNothing) return kBackground;
  Sum sum{};
  constexpr std::int32_t kPixel = kSamplesPerPixel * kPlacesPerSample;
  if (same) {
    AddShade(triangles[ids[0]], x * kPixel + kPixel / 2, y * kPixel + kPixel / 2, kSamples, sum);
  } else {
    for (std::uint32_t i = 0; i < kSamples; ++i) {
      if (ids[i] == Rasteriser::kNothing) {
        for (std::size_t k = 0; k < 3; ++k) sum[k] += kBackground[k];
        continue;
      }
      const int sampleX = firstX + static_cast<int>(i) % kSamplesPerPixel;
      const int sampleY = firstY + static_cast<int>(i) / kSamplesPerPixel;
      AddShade(triangles[ids[i]], sampleX * kPlacesPerSample + kHalfSample,
               sampleY * kPlacesPerSample + kHalfSample, 1, sum);
    }
  }
  Rgb pixel{};
  for (std::size_t k = 0; k < 3; ++k) {
    pixel[k] = static_cast<std::uint8_t>((sum[k] + kSamples / 2) / kSamples);
  }
  return pixel;
}

}  // namespace

Picture DrawModel(const ModelFile& model, const PageSpace& space, const FaceColours& colours,
                  const Camera& camera, PictureSize size) {
  const PictureSize samples{size.width * kSamplesPerPixel, size.height * kSamplesPerPixel};
  const Projection projection(model, space, camera, samples);
  const std::vector<ScreenTriangle> triangles =
      GatherTriangles(model, space, camera, projection, colours);
  Picture picture(size, kBackground);
  if (triangles.empty()) {
    constexpr Rgb kInk{96, 102, 114};
    const int scale = size.width >= kWideText ? 2 : 1;
    DrawText(picture, (size.width - kAdvance * scale * static_cast<int>(kNone.size())) / 2,
             size.height / 2, scale, kInk, kNone);
    return picture;
  }
  Rasteriser rasteriser(samples);
  for (std::size_t i = 0; i < triangles.size(); ++i) {
    rasteriser.Draw(triangles[i], static_cast<std::uint32_t>(i));
  }
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) picture.At(x, y) = PixelOf(rasteriser, triangles, x, y);
  }
  return picture;
}

}  // namespace mapexport
