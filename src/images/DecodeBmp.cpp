#include <cstddef>

#include "images/DecodeImage.h"
#include "images/ImageBytes.h"

namespace mapexport {
namespace {

constexpr std::size_t kFileHeader = 14;
constexpr std::uint32_t kLeastHeader = 40;
constexpr std::uint32_t kHeaderWithAlpha = 56;
constexpr std::size_t kMasksAt = 54;
enum Compression : std::uint32_t { kPlain = 0, kMasks = 3 };

struct BmpChannels {
  ChannelMask red;
  ChannelMask green;
  ChannelMask blue;
  ChannelMask alpha;
};

BmpChannels ChannelsOf(const ImageBytes& bytes, std::uint32_t bits, std::uint32_t compression,
                       std::uint32_t header) {
  if (compression == kMasks) {
    const std::uint32_t alpha = header >= kHeaderWithAlpha ? bytes.U32(kMasksAt + 12) : 0;
    return {ChannelMask(bytes.U32(kMasksAt)), ChannelMask(bytes.U32(kMasksAt + 4)),
            ChannelMask(bytes.U32(kMasksAt + 8)), ChannelMask(alpha, 255)};
  }
  if (bits == 16) {
    return {ChannelMask(0x7C00), ChannelMask(0x3E0), ChannelMask(0x1F), ChannelMask(0, 255)};
  }
  return {ChannelMask(0xFF0000), ChannelMask(0xFF00), ChannelMask(0xFF), ChannelMask(0, 255)};
}

}  // namespace

Image DecodeBmp(std::span<const std::uint8_t> file) {
  const ImageBytes bytes(file);
  const std::size_t pixelsAt = bytes.U32(10);
  const std::uint32_t header = bytes.U32(kFileHeader);
  const std::uint32_t bits = bytes.U16(28);
  const std::uint32_t compression = bytes.U32(30);
  if (header < kLeastHeader) throw ImageError("its header is of an old kind that is not read");
  const bool usesPalette = bits == 1 || bits == 4 || bits == 8;
  const bool isTrue = bits == 16 || bits == 24 || bits == 32;
  if (!(usesPalette || isTrue) ||
      !(compression == kPlain || (compression == kMasks && isTrue && bits != 24))) {
    throw ImageError("it is compressed, or its pixels are of a kind that is not read");
  }
  const std::uint32_t rawHeight = bytes.U32(22);
  const bool fromTop = rawHeight >> 31 != 0;
  const std::size_t width = bytes.U32(18);
  const std::size_t height = fromTop ? 0 - rawHeight : rawHeight;
  RequireImageSize(width, height);
  const std::size_t rowBytes = (width * bits + 31) / 32 * 4;
  bytes.Part(pixelsAt, rowBytes * height);  // before memory is taken for them
  Image image = MakeImage(width, height);
  const std::size_t paletteAt = kFileHeader + std::size_t{header};
  const BmpChannels channels = ChannelsOf(bytes, bits, compression, header);
  for (std::size_t y = 0; y < image.height; ++y) {
    const ImageBytes row(
        bytes.Part(pixelsAt + rowBytes * (fromTop ? y : image.height - 1 - y), rowBytes));
    for (std::size_t x = 0; x < image.width; ++x) {
      std::uint32_t pixel = 0;
      if (usesPalette) {
        const std::size_t bit = x * bits;
        const std::uint32_t index = row.U8(bit / 8) >> (8 - bits - bit % 8) & ((1U << bits) - 1);
        const std::size_t entry = paletteAt + std::size_t{4} * index;
        if (entry + 4 > pixelsAt) throw ImageError("a pixel is not in its palette");
        pixel = bytes.U32(entry);
      } else {
        pixel = row.Number(x * bits / 8, bits / 8);
      }
      std::uint8_t* const to = image.At(x, y);
      to[0] = channels.red.Of(pixel);
      to[1] = channels.green.Of(pixel);
      to[2] = channels.blue.Of(pixel);
      to[3] = channels.alpha.Of(pixel);
    }
  }
  return image;
}

}  // namespace mapexport
