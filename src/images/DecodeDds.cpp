#include <algorithm>
#include <array>
#include <cstddef>

#include "images/DecodeImage.h"
#include "images/ImageBytes.h"

namespace mapexport {
namespace {

constexpr std::size_t kDdsHeader = 128;
constexpr std::size_t kFurtherHeader = 20;
constexpr std::uint32_t kHasAlpha = 1;
constexpr std::uint32_t kHasCode = 4;
constexpr std::uint32_t kIsRgb = 0x40;
constexpr std::uint32_t kCubeOrVolume = 0x20FE00;

constexpr std::uint32_t Code(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<std::uint8_t>(text[i]);
  return code;
}

using Colour = std::array<std::uint8_t, 4>;
using Block = std::array<Colour, 16>;

Colour FromFiveSixFive(std::uint32_t colour) {
  const auto scaled = [](std::uint32_t value, std::uint32_t most) {
    return static_cast<std::uint8_t>((value * 255 + most / 2) / most);
  };
  return {scaled(colour >> 11, 31), scaled(colour >> 5 & 63, 63), scaled(colour & 31, 31), 255};
}

/// (a * aParts + b * bParts) / (aParts + bParts).
Colour Mixed(const Colour& a, std::uint32_t aParts, const Colour& b, std::uint32_t bParts) {
  Colour mixed{0, 0, 0, 255};
  for (std::size_t i = 0; i < 3; ++i) {
    mixed[i] = static_cast<std::uint8_t>((a[i] * aParts + b[i] * bParts) / (aParts + bParts));
  }
  return mixed;
}

void DecodeColours(const ImageBytes& bytes, std::size_t at, bool mayBeClear, Block& block) {
  const std::uint32_t first = bytes.U16(at);
  const std::uint32_t second = bytes.U16(at + 2);
  std::array<Colour, 4> colours{FromFiveSixFive(first), FromFiveSixFive(second)};
  if (first > second || !mayBeClear) {
    colours[2] = Mixed(colours[0], 2, colours[1], 1);
    colours[3] = Mixed(colours[0], 1, colours[1], 2);
  } else {
    colours[2] = Mixed(colours[0], 1, colours[1], 1);
    colours[3] = {};
  }
  const std::uint32_t indices = bytes.U32(at + 4);
  for (std::size_t i = 0; i < block.size(); ++i) block[i] = colours[indices >> (2 * i) & 3];
}

void DecodePlainAlphas(const ImageBytes& bytes, std::size_t at, Block& block) {
  for (std::size_t i = 0; i < block.size(); ++i) {
    const std::uint32_t four = bytes.U8(at + i / 2) >> (i % 2 * 4) & 15;
    block[i][3] = static_cast<std::uint8_t>(four * 17);
  }
}

void DecodeMixedAlphas(const ImageBytes& bytes, std::size_t at, Block& block) {
  const std::uint32_t first = bytes.U8(at);
  const std::uint32_t second = bytes.U8(at + 1);
  std::array<std::uint32_t, 8> alphas{first, second, 0, 0, 0, 0, 0, 255};
  const std::uint32_t parts = first > second ? 7 : 5;
  for (std::uint32_t i = 1; i < parts; ++i) {
    alphas[i + 1] = (first * (parts - i) + second * i) / parts;
  }
  for (std::size_t i = 0; i < block.size(); ++i) {
    const std::size_t bit = 3 * i;
    const std::uint32_t bits = bytes.Number(at + 2 + bit / 24 * 3, 3);
    block[i][3] = static_cast<std::uint8_t>(alphas[bits >> bit % 24 & 7]);
  }
}

enum class Packing { kBc1, kBc2, kBc3 };

void DecodeBlocks(const ImageBytes& bytes, std::size_t at, Packing packing, Image& image) {
  const std::size_t size = packing == Packing::kBc1 ? 8 : 16;
  for (std::size_t top = 0; top < image.height; top += 4) {
    for (std::size_t left = 0; left < image.width; left += 4, at += size) {
      Block block;
      DecodeColours(bytes, at + size - 8, packing == Packing::kBc1, block);
      if (packing == Packing::kBc2) DecodePlainAlphas(bytes, at, block);
      if (packing == Packing::kBc3) DecodeMixedAlphas(bytes, at, block);
      for (std::size_t i = 0; i < block.size(); ++i) {
        const std::size_t x = left + i % 4;
        const std::size_t y = top + i / 4;
        if (x < image.width && y < image.height) std::ranges::copy(block[i], image.At(x, y));
      }
    }
  }
}

struct PixelMasks {
  std::uint32_t bits;
  std::array<std::uint32_t, 4> of;  ///< red, green, blue, alpha
};

void DecodePixels(const ImageBytes& bytes, std::size_t at, const PixelMasks& masks, Image& image) {
  const std::array channels{ChannelMask(masks.of[0]), ChannelMask(masks.of[1]),
                            ChannelMask(masks.of[2]), ChannelMask(masks.of[3], 255)};
  const std::size_t size = masks.bits / 8;
  for (std::size_t i = 0; i < image.pixels.size(); i += 4, at += size) {
    const std::uint32_t pixel = bytes.Number(at, size);
    for (std::size_t k = 0; k < 4; ++k) image.pixels[i + k] = channels[k].Of(pixel);
  }
}

[[noreturn]] void RefuseFormat() {
  throw ImageError("its pixels are neither BC1, BC2, BC3 nor plain ones of 24 or 32 bits");
}

constexpr PixelMasks kRgba{32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}};
constexpr PixelMasks kBgra{32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}};
constexpr PixelMasks kBgrx{32, {0xFF0000, 0xFF00, 0xFF, 0}};

/// By the number of the format in the further header.
void DecodeNumbered(const ImageBytes& bytes, Image& image) {
  constexpr std::size_t at = kDdsHeader + kFurtherHeader;
  const std::uint32_t format = bytes.U32(kDdsHeader);
  if (bytes.U32(kDdsHeader + 4) != 3 || (bytes.U32(kDdsHeader + 8) & 4) != 0) {
    throw ImageError("it is a cube or a volume");
  }
  if (format >= 70 && format <= 72) return DecodeBlocks(bytes, at, Packing::kBc1, image);
  if (format >= 73 && format <= 75) return DecodeBlocks(bytes, at, Packing::kBc2, image);
  if (format >= 76 && format <= 78) return DecodeBlocks(bytes, at, Packing::kBc3, image);
  if (format == 28 || format == 29) return DecodePixels(bytes, at, kRgba, image);
  if (format == 87 || format == 91) return DecodePixels(bytes, at, kBgra, image);
  if (format == 88 || format == 93) return DecodePixels(bytes, at, kBgrx, image);
  RefuseFormat();
}

}  // namespace

Image DecodeDds(std::span<const std::uint8_t> file) {
  const ImageBytes bytes(file);
  bytes.Part(0, kDdsHeader);
  if ((bytes.U32(112) & kCubeOrVolume) != 0) throw ImageError("it is a cube or a volume");
  const std::uint32_t flags = bytes.U32(80);
  const std::uint32_t code = bytes.U32(84);
  const std::size_t width = bytes.U32(16);
  const std::size_t height = bytes.U32(12);
  RequireImageSize(width, height);
  // No kind takes less than half a byte for a pixel. A short file is refused before it takes
  // memory.
  bytes.Part(kDdsHeader, width * height / 2);
  Image image = MakeImage(width, height);
  if ((flags & kHasCode) != 0) {
    if (code == Code("DX10")) {
      DecodeNumbered(bytes, image);
    } else if (code == Code("DXT1")) {
      DecodeBlocks(bytes, kDdsHeader, Packing::kBc1, image);
    } else if (code == Code("DXT2") || code == Code("DXT3")) {
      DecodeBlocks(bytes, kDdsHeader, Packing::kBc2, image);
    } else if (code == Code("DXT4") || code == Code("DXT5")) {
      DecodeBlocks(bytes, kDdsHeader, Packing::kBc3, image);
    } else {
      RefuseFormat();
    }
    return image;
  }
  const std::uint32_t bits = bytes.U32(88);
  if ((flags & kIsRgb) == 0 || (bits != 24 && bits != 32)) RefuseFormat();
  DecodePixels(bytes, kDdsHeader,
               {bits,
                {bytes.U32(92), bytes.U32(96), bytes.U32(100),
                 (flags & kHasAlpha) != 0 ? bytes.U32(104) : 0}},
               image);
  return image;
}

}  // namespace mapexport
