#include "picture/DrawModel.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "picture/DrawText.h"
#include "picture/GatherTriangles.h"
#include "picture/Projection.h"
#include "picture/Rasteriser.h"
#include "picture/ScreenTriangle.h"
#include "picture/TextureSampler.h"

namespace mapexport {
namespace {

constexpr std::string_view kNone = "no triangle to be seen";
constexpr int kWideText = 400;  ///< from this width on, characters are twice as large

using Sum = std::array<std::uint32_t, 3>;

/// The triangles of a picture, and which of them each sample shows.
struct Drawn {
  std::vector<ScreenTriangle> triangles;
  std::vector<TexturedTriangle> textured;
  Rasteriser opaque;
  /// The same, and over it the nearest transparent triangles; nothing where there are none.
  std::optional<Rasteriser> all;
};

/// What a sample shows: a transparent triangle over an opaque one, or one twice.
struct Shown {
  std::uint32_t over = Rasteriser::kNothing;
  std::uint32_t below = Rasteriser::kNothing;

  bool operator==(const Shown&) const = default;
};

/// The triangle's colour in the light at a place on the screen, and its alpha.
Texel ColourOf(const Drawn& drawn, std::uint32_t id, std::int32_t x, std::int32_t y) {
  if (id == Rasteriser::kNothing) return {kBackground[0], kBackground[1], kBackground[2], 255};
  const ScreenTriangle& triangle = drawn.triangles[id];
  const auto& [a, b, c] = triangle.corners;
  const ScreenPoint at{x, y, 0};
  const std::int64_t area = DoubleArea(a, b, c);
  const std::int64_t ofA = DoubleArea(b, c, at);
  const std::int64_t ofB = DoubleArea(c, a, at);
  const std::int64_t ofC = area - ofA - ofB;
  const std::int64_t light =
      (triangle.light[0] * ofA + triangle.light[1] * ofB + triangle.light[2] * ofC) / area;
  Texel colour{triangle.colour[0], triangle.colour[1], triangle.colour[2], 255};
  if (triangle.textured != ScreenTriangle::kNoTexture) {
    colour = SampleTexture(drawn.textured[triangle.textured], triangle, x, y);
  }
  for (std::size_t i = 0; i < 3; ++i) {
    const auto value =
        (colour[i] * static_cast<std::uint32_t>(light) + kFullLight / 2) / kFullLight;
    colour[i] = std::min(std::uint32_t{255}, value);
  }
  return colour;
}

/// Adds `times` the colour at a place on the screen.
void AddShade(const Drawn& drawn, const Shown& shown, std::int32_t x, std::int32_t y,
              std::uint32_t times, Sum& sum) {
  Texel colour = ColourOf(drawn, shown.over, x, y);
  if (shown.over != shown.below) {
    const Texel below = ColourOf(drawn, shown.below, x, y);
    for (std::size_t i = 0; i < 3; ++i) {
      colour[i] = (colour[i] * colour[3] + below[i] * (255 - colour[3]) + 127) / 255;
    }
  }
  for (std::size_t i = 0; i < 3; ++i) sum[i] += times * colour[i];
}

constexpr std::uint32_t kSamples = kSamplesPerPixel * kSamplesPerPixel;

bool IsTextured(const Drawn& drawn, std::uint32_t id) {
  return id != Rasteriser::kNothing && drawn.triangles[id].textured != ScreenTriangle::kNoTexture;
}

Rgb PixelOf(const Drawn& drawn, int x, int y) {
  std::array<Shown, kSamples> shown{};
  const int firstX = x * kSamplesPerPixel;
  const int firstY = y * kSamplesPerPixel;
  bool same = true;
  for (std::uint32_t i = 0; i < kSamples; ++i) {
    const int sampleX = firstX + static_cast<int>(i) % kSamplesPerPixel;
    const int sampleY = firstY + static_cast<int>(i) / kSamplesPerPixel;
    shown[i].below = drawn.opaque.At(sampleX, sampleY);
    shown[i].over = drawn.all ? drawn.all->At(sampleX, sampleY) : shown[i].below;
    same = same && shown[i] == shown[0];
  }
  if (same && shown[0] == Shown{}) return kBackground;
  Sum sum{};
  constexpr std::int32_t kPixel = kSamplesPerPixel * kPlacesPerSample;
  if (same && !IsTextured(drawn, shown[0].over) && !IsTextured(drawn, shown[0].below)) {
    AddShade(drawn, shown[0], x * kPixel + kPixel / 2, y * kPixel + kPixel / 2, kSamples, sum);
  } else {
    for (std::uint32_t i = 0; i < kSamples; ++i) {
      const int sampleX = firstX + static_cast<int>(i) % kSamplesPerPixel;
      const int sampleY = firstY + static_cast<int>(i) / kSamplesPerPixel;
      AddShade(drawn, shown[i], sampleX * kPlacesPerSample + kHalfSample,
               sampleY * kPlacesPerSample + kHalfSample, 1, sum);
    }
  }
  Rgb pixel{};
  for (std::size_t k = 0; k < 3; ++k) {
    pixel[k] = static_cast<std::uint8_t>((sum[k] + kSamples / 2) / kSamples);
  }
  return pixel;
}

/// Draws the triangles that are transparent, or those that are not.
void DrawThose(const std::vector<ScreenTriangle>& triangles, bool transparent,
               Rasteriser& rasteriser) {
  for (std::size_t i = 0; i < triangles.size(); ++i) {
    if (triangles[i].transparent != transparent) continue;
    rasteriser.Draw(triangles[i], static_cast<std::uint32_t>(i));
  }
}

}  // namespace

Picture DrawModel(const ModelFile& model, const PageSpace& space, const FaceColours& colours,
                  const Camera& camera, PictureSize size) {
  const PictureSize samples{size.width * kSamplesPerPixel, size.height * kSamplesPerPixel};
  const Projection projection(model, space, camera, samples);
  Drawn drawn{.triangles = {}, .textured = {}, .opaque = Rasteriser(samples), .all = {}};
  drawn.triangles = GatherTriangles(model, space, camera, projection, colours, drawn.textured);
  Picture picture(size, kBackground);
  if (drawn.triangles.empty()) {
    constexpr Rgb kInk{96, 102, 114};
    const int scale = size.width >= kWideText ? 2 : 1;
    DrawText(picture, (size.width - kAdvance * scale * static_cast<int>(kNone.size())) / 2,
             size.height / 2, scale, kInk, kNone);
    return picture;
  }
  DrawThose(drawn.triangles, false, drawn.opaque);
  if (std::ranges::any_of(drawn.triangles, &ScreenTriangle::transparent)) {
    drawn.all = drawn.opaque;
    DrawThose(drawn.triangles, true, *drawn.all);
  }
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) picture.At(x, y) = PixelOf(drawn, x, y);
  }
  return picture;
}

}  // namespace mapexport
