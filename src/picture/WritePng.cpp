#include "picture/WritePng.h"

#include <csetjmp>
#include <memory>
#include <new>
#include <ostream>

#include <png.h>

#include "system/RunError.h"

namespace mapexport {
namespace {

constexpr int kCompression = 6;
constexpr int kBitsPerChannel = 8;

/// The library is C, so no exception may pass through it.
void Append(png_structp png, png_bytep data, std::size_t size) {
  auto& out = *static_cast<std::ostream*>(png_get_io_ptr(png));
  bool good = false;
  try {
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    good = out.good();
  } catch (...) {
    good = false;
  }
  if (!good) png_error(png, "not written");
}

void Flush(png_structp) {}

/// Without anything that a jump out of the library would leave undestroyed.
bool WriteWithLibrary(png_structp png, png_infop info, const Picture& picture) {
  // NOLINTNEXTLINE(cert-err52-cpp): the library has no other way
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  const PictureSize size = picture.Size();
  png_set_compression_level(png, kCompression);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
  png_set_IHDR(png, info, static_cast<png_uint_32>(size.width),
               static_cast<png_uint_32>(size.height), kBitsPerChannel, PNG_COLOR_TYPE_RGB,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int y = 0; y < size.height; ++y) png_write_row(png, picture.Row(y)->data());
  png_write_end(png, nullptr);
  return true;
}

/// What the library says goes nowhere: its caller says that the file can't be written.
void Say(png_structp, png_const_charp) {}

}  // namespace

void WritePng(const Picture& picture, std::ostream& out) {
  struct Writer {
    png_structp png = nullptr;
    png_infop info = nullptr;
    Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() { png_destroy_write_struct(&png, &info); }
  } writer;
  writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, Say);
  if (writer.png == nullptr) throw std::bad_alloc();
  writer.info = png_create_info_struct(writer.png);
  if (writer.info == nullptr) throw std::bad_alloc();
  png_set_write_fn(writer.png, &out, Append, Flush);
  if (WriteWithLibrary(writer.png, writer.info, picture)) return;
  if (out.good()) throw std::bad_alloc();  // what else the library can fail at
  out.setstate(std::ios::failbit);
}

}  // namespace mapexport
