// Image files: what is decoded, what is refused, and damage.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "images/DecodeImage.h"
#include "images/EncodePng.h"
#include "images/ShrinkImage.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

using std::string_literals::operator""s;
using Bytes = std::vector<std::uint8_t>;

Image Decode(std::string_view file) {
  const Bytes bytes(file.begin(), file.end());
  return DecodeImage(bytes);
}

/// Little-endian numbers of four bytes.
std::string Words(std::initializer_list<std::uint32_t> words) {
  std::string bytes;
  for (const std::uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(word >> shift);
  }
  return bytes;
}

std::string Dds(std::uint32_t size, std::initializer_list<std::uint32_t> format,
                std::string_view data) {
  std::string file = "DDS " + Words({124, 0x1007, size, size, 0, 0, 0}) + std::string(44, '\0') +
                     Words({32}) + Words(format);
  file.resize(128);
  return file.append(data);
}

const std::string kRedGreen = "\x00\x00\xff\x00\xff\x00"s;  // blue first
const std::string kBmp =
    "BM" + Words({62, 0, 54, 40, 2, 1, 0x180001, 0, 8, 0, 0, 0, 0}) + kRedGreen + "\0\0"s;
const std::string kTga = "\0\0\x02\0\0\0\0\0\0\0\0\0\x02\0\x01\0\x18\x20"s + kRedGreen;
const std::string kRunTga =
    "\0\0\x0a\0\0\0\0\0\0\0\0\0\x02\0\x02\0\x20\x08\x81\1\2\3\4\x01\5\6\7\x08\x09\x0a\x0b\x0c"s;
const std::string kBc1 = Dds(4, {4, 0x31545844}, "\x00\xf8\xe0\x07\x00\x55\xaa\xff"s);
const std::string kPlainDds = Dds(1, {0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000}, "\1\2\3\4");
const std::string kJpeg =  // its tables have one code each: a step of 576 eighths from 128; the end
    "\xff\xd8\xff\xdb\0\x43\0"s + std::string(64, '\1') +
    "\xff\xc0\0\x0b\x08\0\1\0\1\1\1\x11\0\xff\xc4\0\x14\0\1"s + std::string(15, '\0') +
    "\x0a\xff\xc4\0\x14\x10\1"s + std::string(16, '\0') +
    "\xff\xda\0\x08\1\1\0\0\x3f\0\x48\x0f\xff\xd9"s;

TEST(Images, DecodesTheFormats) {
  EXPECT_THAT(Decode(kJpeg).pixels, ElementsAre(200, 200, 200, 255));
  std::string stray = kJpeg;
  stray.insert(kJpeg.find("\xff\xc0"), "\0\0pad"s);
  EXPECT_THAT(Decode(stray).pixels, ElementsAre(200, 200, 200, 255));
  EXPECT_THAT(Decode(kBmp).pixels, ElementsAre(255, 0, 0, 255, 0, 255, 0, 255));
  EXPECT_THAT(Decode(kTga).pixels, ElementsAre(255, 0, 0, 255, 0, 255, 0, 255));
  EXPECT_THAT(Decode(kRunTga).pixels,
              ElementsAre(7, 6, 5, 8, 11, 10, 9, 12, 3, 2, 1, 4, 3, 2, 1, 4))
      << "from the bottom";
  const std::string paletteTga = "\0\1\1\1\0\2\0\x18\0\0\0\0\2\0\1\0\x08\x30\1\2\3\4\5\6\1\2"s;
  EXPECT_THAT(Decode(paletteTga).pixels, ElementsAre(6, 5, 4, 255, 3, 2, 1, 255))
      << "from the right";
  const std::string topBmp =
      "BM" + Words({58, 0, 54, 40, 1, 0xFFFFFFFF, 0x100001, 0, 4, 0, 0, 0, 0, 0x7C00});
  EXPECT_THAT(Decode(topBmp).pixels, ElementsAre(255, 0, 0, 255));
  const std::string further = Dds(1, {4, 0x30315844}, Words({28, 3, 0, 1, 0}) + "\1\2\3\4");
  EXPECT_THAT(Decode(further).pixels, ElementsAre(1, 2, 3, 4));
  for (const char alpha : {'\0', '\4'}) {  // not declared, and written or left 0
    const std::string tga = "\0\0\2\0\0\0\0\0\0\0\0\0\1\0\1\0\x20\x20\1\2\3"s + alpha;
    EXPECT_THAT(Decode(tga).pixels, ElementsAre(3, 2, 1, alpha == 0 ? 255 : alpha));
  }
  const Image bc1 = Decode(kBc1);
  EXPECT_THAT(Bytes(bc1.At(0, 0), bc1.At(0, 0) + 4), ElementsAre(255, 0, 0, 255));
  EXPECT_THAT(Bytes(bc1.At(0, 1), bc1.At(0, 1) + 4), ElementsAre(0, 255, 0, 255));
  EXPECT_THAT(Bytes(bc1.At(0, 2), bc1.At(0, 2) + 4), ElementsAre(170, 85, 0, 255));
  EXPECT_THAT(Bytes(bc1.At(0, 3), bc1.At(0, 3) + 4), ElementsAre(85, 170, 0, 255));
  EXPECT_THAT(Decode(kPlainDds).pixels, ElementsAre(3, 2, 1, 4));
  const std::string bc3 = Dds(4, {4, 0x35545844}, "\xff\0\x01\0\0\0\0\0"s + kBc1.substr(128));
  EXPECT_EQ(Decode(bc3).At(0, 0)[3], 0);
  EXPECT_EQ(Decode(bc3).At(1, 0)[3], 255);
  const std::string bc2 = Dds(4, {4, 0x33545844}, "\x21\0\0\0\0\0\0\0"s + kBc1.substr(128));
  EXPECT_EQ(Decode(bc2).At(1, 0)[3], 0x22);
  Image image = MakeImage(3, 2);
  for (std::size_t i = 0; i < image.pixels.size(); ++i)
    image.pixels[i] = static_cast<std::uint8_t>(i * 9);
  EXPECT_EQ(Decode(EncodePng(image)).pixels, image.pixels);
}

TEST(Images, RefusesDamageAndWhatIsTooLarge) {
  for (const std::string& file :
       {kBmp, kTga, kRunTga, kBc1, kPlainDds, kJpeg, EncodePng(MakeImage(5, 5))}) {
    const bool isPng = file[1] == 'P';  // the end of which holds checksums alone
    const std::size_t needed = isPng ? 60 : file.size() - (file == kBmp ? 2 : 0);
    for (std::size_t size = 0; size < needed; ++size) {
      EXPECT_THROW(Decode(file.substr(0, size)), ImageError) << size;
    }
    for (std::size_t at = 0; at < std::min<std::size_t>(file.size(), 160); ++at) {
      for (const char value : {'\0', '\1', '\x7f', '\xff'}) {
        std::string damaged = file;
        damaged[at] = value;
        try {
          const Image image = Decode(damaged);
          EXPECT_EQ(image.pixels.size(), std::size_t{4} * image.width * image.height);
        } catch (const ImageError&) {
        }
      }
    }
  }
  const std::string paletteBmp =
      "BM" + Words({62, 0, 58, 40, 1, 1, 0x80001, 0, 4, 0, 0, 1, 0, 0x030201});
  EXPECT_THAT(Decode(paletteBmp + "\0\0\0\0"s).pixels, ElementsAre(3, 2, 1, 255));
  EXPECT_THROW(Decode(paletteBmp + "\1\0\0\0"s), ImageError) << "not in the palette";
  EXPECT_THROW(Decode("\0\0\1\0\0\1\0\x18\0\0\0\0\1\0\1\0\x08\x20\0\0\0"s), ImageError)
      << "without a palette";
  EXPECT_THROW(Decode("GIF89a"), ImageError);
  EXPECT_THROW(Decode("\xff\xd8\xff\xe0 no JPEG"), ImageError);
  EXPECT_THROW(MakeImage(kMaxImageEdge, kMaxImageEdge), ImageError);
}

TEST(Images, ShrinksByMeans) {
  Image image = MakeImage(8, 1);
  for (std::size_t x = 0; x < 8; ++x) image.At(x, 0)[0] = static_cast<std::uint8_t>(10 * x);
  for (const std::size_t clear : {1U, 6U, 7U}) image.At(clear, 0)[3] = 0;
  const Image small = ShrinkImage(image, 4);
  EXPECT_EQ(small.height, 1U);
  EXPECT_THAT(small.pixels, ElementsAre(0, 0, 0, 128, 25, 0, 0, 255, 45, 0, 0, 255, 65, 0, 0, 0));
}

}  // namespace
}  // namespace mapexport
