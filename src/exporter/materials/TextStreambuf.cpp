#include "exporter/materials/TextStreambuf.h"

namespace mapexport {

TextStreambuf::int_type TextStreambuf::underflow() {
  const std::streamsize count =
      source_.sgetn(chunk_.data(), static_cast<std::streamsize>(chunk_.size()));
  if (count <= 0) return traits_type::eof();

  const char* const last = chunk_.data() + count - 1;
  char* out = chunk_.data();
  for (const char* in = chunk_.data(); in != last; ++in) {
    if (in[0] != '\r' || in[1] != '\n') *out++ = *in;
  }
  *out = *last;
  // A carriage return at the end of the chunk is replaced by the line feed after it.
  if (*out == '\r' && source_.sgetc() == traits_type::to_int_type('\n')) {
    source_.sbumpc();
    *out = '\n';
  }
  setg(chunk_.data(), chunk_.data(), out + 1);
  return traits_type::to_int_type(*gptr());
}

}  // namespace mapexport
