// Reads numbers and pixels of image files.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "images/Image.h"

namespace mapexport {

/// The bytes of an image file; everything is checked against their end.
class ImageBytes {
 public:
  explicit ImageBytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::uint8_t U8(std::size_t at) const { return Part(at, 1)[0]; }
  std::uint32_t U16(std::size_t at) const { return Number(at, 2); }
  std::uint32_t U32(std::size_t at) const { return Number(at, 4); }
  /// Little-endian, 1 to 4 bytes.
  std::uint32_t Number(std::size_t at, std::size_t size) const {
    const std::span<const std::uint8_t> part = Part(at, size);
    std::uint32_t number = 0;
    for (std::size_t i = size; i > 0; --i) number = number << 8 | part[i - 1];
    return number;
  }
  /// Throws ImageError when they are not all there.
  std::span<const std::uint8_t> Part(std::size_t at, std::size_t size) const {
    if (at > bytes_.size() || size > bytes_.size() - at) throw ImageError("it ends too early");
    return bytes_.subspan(at, size);
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

/// A channel of a pixel: the bits of a mask, which need not have 8.
class ChannelMask {
 public:
  /// Without bits every value is `none`. Throws ImageError when they are not next to each other.
  explicit ChannelMask(std::uint32_t mask, std::uint8_t none = 0) : mask_(mask), none_(none) {
    if (mask == 0) return;
    shift_ = std::countr_zero(mask);
    most_ = mask >> shift_;
    if ((most_ & (most_ + 1)) != 0) throw ImageError("a mask of its channels has gaps");
  }
  std::uint8_t Of(std::uint32_t pixel) const {
    if (mask_ == 0) return none_;
    const std::uint64_t value = (pixel & mask_) >> shift_;
    return static_cast<std::uint8_t>((value * 255 + most_ / 2) / most_);
  }

 private:
  std::uint32_t mask_;
  std::uint8_t none_;
  int shift_ = 0;
  std::uint64_t most_ = 0;
};

}  // namespace mapexport
