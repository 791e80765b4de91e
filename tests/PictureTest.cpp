// Pictures of models: the rasteriser against the literal test of every sample, and what is drawn.
#include <png.h>

#include "images/Image.h"
#include "picture/DrawModel.h"
#include "picture/Rasteriser.h"
#include "picture/WritePng.h"
#include "support/ModelFiles.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

constexpr PictureSize kSize{150, 100};  // samples: no multiple of a block, several squares
using Random = std::minstd_rand;

std::int32_t Between(Random& random, std::int32_t least, std::int32_t most) {
  return std::uniform_int_distribution<std::int32_t>(least, most)(random);
}

/// Often on samples and on their rows and columns, where the fill rule decides.
ScreenPoint RandomPoint(Random& random, std::int32_t reach) {
  const auto place = [&](std::int32_t samples) {
    const std::int32_t at = Between(random, -reach, samples + reach);
    const bool exact = Between(random, 0, 1) == 0;
    return at * kPlacesPerSample + (exact ? kHalfSample : Between(random, 0, kPlacesPerSample));
  };
  return {place(kSize.width), place(kSize.height), 0};
}

/// Whether a sample is within the triangle, literally: on the inner side of each edge, or on a top
/// or left edge.
bool Covers(const ScreenTriangle& triangle, int x, int y) {
  const ScreenPoint at{x * kPlacesPerSample + kHalfSample, y * kPlacesPerSample + kHalfSample, 0};
  for (std::size_t i = 0; i < 3; ++i) {
    const ScreenPoint& from = triangle.corners[i];
    const ScreenPoint& to = triangle.corners[(i + 1) % 3];
    const std::int64_t side = DoubleArea(from, to, at);
    const bool isTop = to.y == from.y && to.x > from.x;
    if (side < 0 || (side == 0 && !isTop && to.y >= from.y)) return false;
  }
  return true;
}

double DepthOf(const ScreenTriangle& triangle, int x, int y) {
  const auto& [a, b, c] = triangle.corners;
  const ScreenPoint at{x * kPlacesPerSample + kHalfSample, y * kPlacesPerSample + kHalfSample, 0};
  const auto part = [](std::int64_t area, std::int32_t depth) {
    return static_cast<double>(area) * depth;
  };
  return (part(DoubleArea(b, c, at), a.depth) + part(DoubleArea(c, a, at), b.depth) +
          part(DoubleArea(a, b, at), c.depth)) /
         static_cast<double>(DoubleArea(a, b, c));
}

ScreenTriangle Clockwise(ScreenTriangle triangle) {
  auto& [a, b, c] = triangle.corners;
  if (DoubleArea(a, b, c) < 0) std::swap(b, c);
  return triangle;
}

TEST(RasteriserTest, ShowsAtEachSampleTheNearestTriangleThatCoversIt) {
  for (const bool flat : {true, false}) {
    for (const std::int32_t reach : {0, 5, 100, 16000}) {
      for (unsigned seed = 1; seed <= 12; ++seed) {
        Random random(seed);
        std::vector<ScreenTriangle> triangles;
        while (triangles.size() < 60) {
          ScreenTriangle triangle;
          triangle.corners[0] = RandomPoint(random, reach);
          for (ScreenPoint& corner : triangle.corners) {
            // Half of them are small.
            corner = seed % 2 == 0 ? RandomPoint(random, reach) : triangle.corners[0];
            if (seed % 2 != 0) corner.x += Between(random, -900, 900);
            if (seed % 2 != 0) corner.y += Between(random, -900, 900);
            corner.depth = Between(random, 0, kFarthestDepth);
          }
          for (ScreenPoint& corner : triangle.corners) {
            if (flat) corner.depth = triangle.corners[0].depth;
          }
          if (seed % 3 == 0 && triangles.size() > 1) {
            // A stack: like the last but one, moved by little, and a little behind.
            triangle.corners = triangles[triangles.size() - 2].corners;
            for (ScreenPoint& corner : triangle.corners) {
              corner.x += Between(random, -2, 12);
              corner.y += Between(random, -12, 2);
              corner.depth = std::min(kFarthestDepth, corner.depth + Between(random, 0, 200));
            }
            if (flat) triangle.corners[1].depth = triangle.corners[0].depth;
            if (flat) triangle.corners[2].depth = triangle.corners[0].depth;
          }
          const auto& [a, b, c] = triangle.corners;
          if (DoubleArea(a, b, c) != 0) triangles.push_back(Clockwise(triangle));
        }
        Rasteriser rasteriser(kSize);
        for (std::uint32_t i = 0; i < triangles.size(); ++i) rasteriser.Draw(triangles[i], i);
        for (int y = 0; y < kSize.height; ++y) {
          for (int x = 0; x < kSize.width; ++x) {
            double nearest = std::numeric_limits<double>::infinity();
            std::uint32_t expected = Rasteriser::kNothing;
            for (std::uint32_t i = 0; i < triangles.size(); ++i) {
              if (!Covers(triangles[i], x, y) || DepthOf(triangles[i], x, y) >= nearest) continue;
              nearest = DepthOf(triangles[i], x, y);
              expected = i;
            }
            const std::uint32_t shown = rasteriser.At(x, y);
            if (shown == expected) continue;
            // Rounded depths may exchange two that are nearly as near, but change no coverage.
            ASSERT_NE(shown, Rasteriser::kNothing) << x << ' ' << y << " seed " << seed;
            ASSERT_NE(expected, Rasteriser::kNothing) << x << ' ' << y << " seed " << seed;
            ASSERT_TRUE(Covers(triangles[shown], x, y)) << x << ' ' << y << " seed " << seed;
            ASSERT_FALSE(flat) << x << ' ' << y << " seed " << seed;
            ASSERT_LE(DepthOf(triangles[shown], x, y) - nearest, 64) << x << ' ' << y;
          }
        }
      }
    }
  }
}

TEST(RasteriserTest, CoversSharedEdgesOnce) {
  constexpr int kCells = 5;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    std::vector<ScreenPoint> points;
    for (int y = 0; y <= kCells; ++y) {
      for (int x = 0; x <= kCells; ++x) {
        const bool inner = x % kCells != 0 && y % kCells != 0;
        const auto place = [&](int cell, int samples) {
          const int at = cell * samples / kCells;
          const int moved = inner ? at + Between(random, -6, 6) : at;
          return moved * kPlacesPerSample + (Between(random, 0, 1) && inner ? 7 : kHalfSample);
        };
        points.push_back({place(x, kSize.width - 1), place(y, kSize.height - 1), 5});
      }
    }
    std::vector<int> times(static_cast<std::size_t>(kSize.width * kSize.height));
    for (std::size_t y = 0; y < kCells; ++y) {
      for (std::size_t x = 0; x < kCells; ++x) {
        const std::size_t at = y * (kCells + 1) + x;
        const std::size_t under = at + kCells + 1;
        for (const auto& of : {std::array{at, at + 1, under}, {at + 1, under + 1, under}}) {
          Rasteriser rasteriser(kSize);
          rasteriser.Draw(Clockwise({.corners = {points[of[0]], points[of[1]], points[of[2]]}}), 0);
          for (int i = 0; i < kSize.width * kSize.height; ++i) {
            const bool drawn = rasteriser.At(i % kSize.width, i / kSize.width) == 0;
            times[static_cast<std::size_t>(i)] += drawn ? 1 : 0;
          }
        }
      }
    }
    for (int i = 0; i < kSize.width * kSize.height; ++i) {
      const bool within = i % kSize.width < kSize.width - 1 && i / kSize.width < kSize.height - 1;
      ASSERT_EQ(times[static_cast<std::size_t>(i)], within ? 1 : 0) << i << " seed " << seed;
    }
  }
}

Picture Draw(const ModelFile& model, NamedView view = NamedView::kIso,
             Colouring colouring = Colouring::kMaterial) {
  return DrawModel(model, PageSpace(model, 0), FaceColours(model, colouring),
                   kNamedViews.at(static_cast<std::size_t>(view)), {60, 40});
}

std::vector<Rgb> Pixels(const Picture& picture) {
  const auto [width, height] = picture.Size();
  return {picture.Row(0), picture.Row(0) + width * height};
}

std::size_t Drawn(const Picture& picture) {
  const std::vector<Rgb> pixels = Pixels(picture);
  return pixels.size() - static_cast<std::size_t>(std::ranges::count(pixels, kBackground));
}

TEST(PictureTest, TheSamePixelsOnEveryMachine) {
  const ModelFile yard = Yard(ModelLayout::kKob);
  std::uint64_t hash = 14695981039346656037U;
  for (const NamedView view : {NamedView::kIso, NamedView::kTop, NamedView::kFront}) {
    for (const Colouring colouring : {Colouring::kMaterial, Colouring::kBatch, Colouring::kFlags}) {
      for (const Rgb& pixel : Pixels(Draw(yard, view, colouring))) {
        for (const std::uint8_t channel : pixel) hash = (hash ^ channel) * 1099511628211U;
      }
    }
  }
  EXPECT_EQ(hash, 16427846206657971393U);
}

TEST(PictureTest, TexturesLieInPerspectiveAndBlend) {
  Image four = MakeImage(4, 1);
  for (std::size_t x = 0; x < 4; ++x) four.At(x, 0)[0] = static_cast<std::uint8_t>(80 * x);
  const TextureLevels levels{four};
  constexpr std::int32_t kFar = 1000 * kPlacesPerSample;
  const ScreenTriangle triangle{.corners = {{{0, 0, 0}, {kFar, 0, 0}, {0, kFar, 0}}}};
  // Half of the way to a corner that is four times as far away is a fifth of the texture.
  const TexturedTriangle texture{&levels, {{{0, 0, 1}, {0.25, 0, 0.25}, {0, 0, 1}}}};
  EXPECT_THAT(SampleTexture(texture, triangle, kFar / 2, 0), ElementsAre(24, 0, 0, 255));
  EXPECT_THAT(SampleTexture(texture, triangle, 0, 0), ElementsAre(120, 0, 0, 255)) << "it repeats";

  ModelFile yard = Yard(ModelLayout::kKob);
  for (ModelBatch& batch : yard.groups[0].batches) {
    batch.material = 0;
    float place = 0;
    for (ModelCorner& corner : batch.corners) {
      corner.u = place += 0.3F;
      corner.v = 0.7F * place * place;
    }
  }
  std::uint64_t hash = 14695981039346656037U;
  for (const std::uint8_t alpha : {std::uint8_t{255}, std::uint8_t{100}}) {
    TextureImages images;
    for (ModelMaterial& material : yard.materials) {
      material.textureName = "t";
      images["t"] = {MakeImage(4, 4)};
    }
    for (std::size_t i = 0; i < 16; ++i) {
      std::uint8_t* const pixel = images["t"][0].At(i % 4, i / 4);
      pixel[0] = static_cast<std::uint8_t>(i * 16);
      pixel[1] = 90;
      pixel[3] = alpha;
    }
    const Picture picture =
        DrawModel(yard, PageSpace(yard, 0), FaceColours(yard, Colouring::kTexture, images),
                  kNamedViews[0], {60, 40});
    EXPECT_EQ(Drawn(picture), Drawn(Draw(yard)));
    for (const Rgb& pixel : Pixels(picture)) {
      for (const std::uint8_t channel : pixel) hash = (hash ^ channel) * 1099511628211U;
    }
  }
  EXPECT_EQ(hash, 685474314226945504U);

  ModelBatch& bare = yard.groups[0].batches[0];
  bare.material = -1;
  for (ModelCorner& corner : bare.corners) corner.colour = {1, 0.2F, 0, 1};
  EXPECT_THAT(FaceColours(yard, Colouring::kTexture).OfBatch(0, 0), testing::Each(Rgb{255, 51, 0}))
      << "as in the page";
}

TEST(PictureTest, ThePngHoldsThePixels) {
  const Picture picture = Draw(Yard(ModelLayout::kKob));
  std::ostringstream out;
  WritePng(picture, out);
  const std::string bytes = out.str();
  EXPECT_EQ(bytes.find("tIME"), std::string::npos);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()));
  ASSERT_EQ(std::pair(image.width, image.height), std::pair(60U, 40U));
  image.format = PNG_FORMAT_RGB;
  std::vector<Rgb> pixels(60 * 40);
  ASSERT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
  EXPECT_EQ(pixels, Pixels(picture));
}

TEST(PictureTest, HostileModelsAreDrawnWithinBounds) {
  const float infinity = std::numeric_limits<float>::infinity();
  const Picture whole = Draw(Yard(ModelLayout::kKob));
  EXPECT_GT(Drawn(whole), 300U);
  const std::size_t note = Drawn(Draw(ModelFile{}));
  EXPECT_THAT(note, AllOf(testing::Gt(0U), testing::Lt(200U)));

  for (const float value : {std::nanf(""), infinity, -infinity, 3e38F, 1e-38F, 1e6F, 0.0F}) {
    for (std::size_t changed = 1; changed <= 4; ++changed) {
      ModelFile model = Yard(ModelLayout::kKob);
      ModelGroup& group = model.groups[0];
      for (std::size_t i = 0; i < changed; ++i) group.vertices[i] = {value, value, -value};
      group.batches[0].corners[0].normal = {value, value, value};
      for (const NamedView view : {NamedView::kIso, NamedView::kTop}) Draw(model, view);
    }
  }
  ModelFile cut = Yard(ModelLayout::kKob);
  for (ModelBatch& batch : cut.groups[0].batches) {
    for (ModelBatchFace& face : batch.faces) face.vertices = face.corners = {65535, 0, 1};
  }
  EXPECT_EQ(Drawn(Draw(cut)), note);
}

}  // namespace
}  // namespace mapexport
