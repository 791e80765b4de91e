#include <array>
#include <csetjmp>
#include <cstdio>
#include <string>

#include <jpeglib.h>
// After the library's own header.
#include <jerror.h>

#include "images/DecodeImage.h"

namespace mapexport {
namespace {

struct JpegReader {
  jpeg_decompress_struct jpeg{};
  jpeg_error_mgr errors{};
  std::jmp_buf failed{};
  bool isInHeader = true;
  std::array<char, JMSG_LENGTH_MAX> reason{};

  JpegReader() = default;
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;
  ~JpegReader() { jpeg_destroy_decompress(&jpeg); }
};

/// The library is C and expects this not to return.
[[noreturn]] void Fail(j_common_ptr common) {
  auto& reader = *static_cast<JpegReader*>(common->client_data);
  common->err->format_message(common, reader.reason.data());
  std::longjmp(reader.failed, 1);  // NOLINT(cert-err52-cpp): the library has no other way
}

/// Damage that the library would draw over with grey is damage nevertheless. But some programs
/// write stray bytes between the parts before the picture, or number their version otherwise.
void FailAtWarning(j_common_ptr common, int level) {
  if (level >= 0) return;
  const int code = common->err->msg_code;
  const bool isHarmless = code == JWRN_EXTRANEOUS_DATA || code == JWRN_JFIF_MAJOR;
  if (!isHarmless || !static_cast<JpegReader*>(common->client_data)->isInHeader) Fail(common);
}

// Without anything that a jump out of the library would leave undestroyed.

bool ReadHeader(JpegReader& reader, std::span<const std::uint8_t> file) {
  // NOLINTNEXTLINE(cert-err52-cpp)
  if (setjmp(reader.failed) != 0) return false;
  jpeg_create_decompress(&reader.jpeg);
  jpeg_mem_src(&reader.jpeg, file.data(), static_cast<unsigned long>(file.size()));
  jpeg_read_header(&reader.jpeg, TRUE);
  reader.isInHeader = false;
  return true;
}

bool ReadRows(JpegReader& reader, Image& image) {
  jpeg_decompress_struct& jpeg = reader.jpeg;
  // NOLINTNEXTLINE(cert-err52-cpp)
  if (setjmp(reader.failed) != 0) return false;
  jpeg.out_color_space = JCS_EXT_RGBA;  // of which alpha is 255
  jpeg.dct_method = JDCT_ISLOW;         // the same on every processor
  jpeg_start_decompress(&jpeg);
  while (jpeg.output_scanline < jpeg.output_height) {
    JSAMPROW row = image.At(0, jpeg.output_scanline);
    jpeg_read_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_decompress(&jpeg);
  return true;
}

}  // namespace

Image DecodeJpeg(std::span<const std::uint8_t> file) {
  JpegReader reader;
  reader.jpeg.err = jpeg_std_error(&reader.errors);
  reader.errors.error_exit = Fail;
  reader.errors.emit_message = FailAtWarning;
  reader.jpeg.client_data = &reader;
  if (!ReadHeader(reader, file)) throw ImageError(reader.reason.data());
  Image image = MakeImage(reader.jpeg.image_width, reader.jpeg.image_height);
  if (reader.jpeg.num_components == 4) throw ImageError("it has four inks; only RGB and grey do");
  if (!ReadRows(reader, image)) throw ImageError(reader.reason.data());
  return image;
}

}  // namespace mapexport
