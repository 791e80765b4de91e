// A decoded image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace mapexport {

/// The most pixels on an axis of an image that is decoded, and in all of it.
inline constexpr std::uint32_t kMaxImageEdge = 16384;
inline constexpr std::uint64_t kMaxImagePixels = std::uint64_t{1} << 26;

/// Rows from the top; red, green, blue and alpha in a byte each, alpha not multiplied in.
struct Image {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;

  std::uint8_t* At(std::size_t x, std::size_t y) { return &pixels[4 * (y * width + x)]; }
  const std::uint8_t* At(std::size_t x, std::size_t y) const {
    return &pixels[4 * (y * width + x)];
  }
};

/// Why an image can't be decoded: what() completes "FILE: can't be read: ".
class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws ImageError for an image that is empty or too large.
void RequireImageSize(std::uint64_t width, std::uint64_t height);

/// An opaque black image. Throws what RequireImageSize throws.
Image MakeImage(std::uint64_t width, std::uint64_t height);

}  // namespace mapexport
