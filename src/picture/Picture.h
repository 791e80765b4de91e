// A picture in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mapexport {

using Rgb = std::array<std::uint8_t, 3>;

struct PictureSize {
  int width = 0;
  int height = 0;
};

/// Rows from the top, 3 bytes per pixel.
class Picture {
 public:
  Picture(PictureSize size, Rgb colour) : size_(size) {
    pixels_.assign(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height),
                   colour);
  }

  PictureSize Size() const { return size_; }
  /// A pixel within the picture.
  Rgb& At(int x, int y) {
    return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(size_.width) +
                   static_cast<std::size_t>(x)];
  }
  const Rgb* Row(int y) const {
    return &pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(size_.width)];
  }

 private:
  PictureSize size_;
  std::vector<Rgb> pixels_;
};

}  // namespace mapexport
