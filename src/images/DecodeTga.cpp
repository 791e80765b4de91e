#include <cstddef>

#include "images/DecodeImage.h"
#include "images/ImageBytes.h"

namespace mapexport {
namespace {

constexpr std::size_t kTgaHeader = 18;
enum Kind : std::uint32_t { kPalette = 1, kTrue = 2, kGrey = 3 };
constexpr std::uint32_t kRunLengths = 8;  ///< added to a kind

struct TgaFormat {
  std::uint32_t kind = 0;
  std::uint32_t pixelBytes = 0;
  std::uint32_t firstEntry = 0;
  std::uint32_t entries = 0;
  std::uint32_t entryBytes = 0;
  bool hasAlpha = false;  ///< as it is declared
  std::size_t paletteAt = 0;
};

/// `bytes` bytes of colour, blue first. `hasAlpha` is for those of two.
void SetColour(std::uint32_t colour, std::uint32_t bytes, bool hasAlpha, std::uint8_t* to) {
  if (bytes == 2) {
    const auto five = [colour](int shift) {
      return static_cast<std::uint8_t>(((colour >> shift & 31) * 255 + 15) / 31);
    };
    to[0] = five(10);
    to[1] = five(5);
    to[2] = five(0);
    to[3] = hasAlpha && colour >> 15 == 0 ? 0 : 255;
    return;
  }
  to[0] = static_cast<std::uint8_t>(colour >> 16);
  to[1] = static_cast<std::uint8_t>(colour >> 8);
  to[2] = static_cast<std::uint8_t>(colour);
  to[3] = bytes == 4 ? static_cast<std::uint8_t>(colour >> 24) : 255;
}

void SetPixel(const ImageBytes& bytes, std::size_t at, const TgaFormat& format, std::uint8_t* to) {
  const std::uint32_t value = bytes.Number(at, format.pixelBytes);
  if (format.kind == kTrue) return SetColour(value, format.pixelBytes, format.hasAlpha, to);
  if (format.kind == kGrey) {
    to[0] = to[1] = to[2] = static_cast<std::uint8_t>(value);
    to[3] = format.pixelBytes == 2 ? static_cast<std::uint8_t>(value >> 8) : 255;
    return;
  }
  if (value < format.firstEntry || value - format.firstEntry >= format.entries) {
    throw ImageError("a pixel is not in its palette");
  }
  const std::size_t entry =
      format.paletteAt + std::size_t{format.entryBytes} * (value - format.firstEntry);
  SetColour(bytes.Number(entry, format.entryBytes), format.entryBytes, format.hasAlpha, to);
}

void MakeOpaqueIfClear(Image& image) {
  std::uint8_t most = 0;
  for (std::size_t i = 3; i < image.pixels.size(); i += 4) most |= image.pixels[i];
  for (std::size_t i = 3; most == 0 && i < image.pixels.size(); i += 4) image.pixels[i] = 255;
}

bool IsRead(const TgaFormat& format) {
  const auto isColour = [](std::uint32_t bytes) { return bytes >= 2 && bytes <= 4; };
  switch (format.kind) {
    case kPalette:
      return format.pixelBytes <= 2 && format.pixelBytes > 0 && isColour(format.entryBytes);
    case kTrue:
      return isColour(format.pixelBytes);
    case kGrey:
      return format.pixelBytes == 1 || format.pixelBytes == 2;
    default:
      return false;
  }
}

}  // namespace

Image DecodeTga(std::span<const std::uint8_t> file) {
  const ImageBytes bytes(file);
  bytes.Part(0, kTgaHeader);
  const std::uint32_t type = bytes.U8(2);
  const std::uint32_t descriptor = bytes.U8(17);
  TgaFormat format;
  format.kind = type & ~kRunLengths;
  format.pixelBytes = (bytes.U8(16) + 7U) / 8;
  format.firstEntry = bytes.U16(3);
  format.entries = bytes.U16(5);
  format.entryBytes = (bytes.U8(7) + 7U) / 8;
  format.hasAlpha = (descriptor & 15) != 0;
  format.paletteAt = kTgaHeader + bytes.U8(0);
  const bool hasPalette = bytes.U8(1) == 1;
  if (bytes.U8(1) > 1 || !IsRead(format) || descriptor >> 6 != 0 ||
      (format.kind == kPalette && !hasPalette)) {
    throw ImageError("only PNG, JPEG, BMP, TGA and DDS are read");
  }
  const bool fromRight = (descriptor & 16) != 0;
  const bool fromTop = (descriptor & 32) != 0;
  const std::size_t size = format.pixelBytes;
  std::size_t at = format.paletteAt;
  if (hasPalette) at += std::size_t{format.entries} * format.entryBytes;
  const std::size_t pixels = std::size_t{bytes.U16(12)} * bytes.U16(14);
  // A short file is refused before it takes memory; a run is of up to 128 pixels.
  bytes.Part(at, (type & kRunLengths) != 0 ? (pixels + 127) / 128 * (size + 1) : pixels * size);
  Image image = MakeImage(bytes.U16(12), bytes.U16(14));
  std::size_t left = 0;  ///< of a run
  bool repeats = false;
  for (std::size_t row = 0; row < image.height; ++row) {
    const std::size_t y = fromTop ? row : image.height - 1 - row;
    for (std::size_t column = 0; column < image.width; ++column) {
      if (left == 0 && (type & kRunLengths) != 0) {
        const std::uint8_t run = bytes.U8(at++);
        repeats = run >= 128;
        left = run % 128 + std::size_t{1};
      }
      SetPixel(bytes, at, format, image.At(fromRight ? image.width - 1 - column : column, y));
      if (left > 0) --left;
      if (!repeats || left == 0) at += size;
    }
  }
  // Many programs write alphas without declaring them, as they are read elsewhere; some write 0.
  if (!format.hasAlpha) MakeOpaqueIfClear(image);
  return image;
}

}  // namespace mapexport
