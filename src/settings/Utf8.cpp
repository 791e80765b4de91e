#include "settings/Utf8.h"

namespace mapexport {
namespace {

/// Number of bytes in the sequence that `text` begins with, 0 when it begins with none.
std::size_t SequenceLength(std::string_view text) {
  const auto byteAt = [text](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const unsigned lead = byteAt(0);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  // The second byte's range keeps overlong forms, surrogates and too large values out.
  const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (byteAt(1) < low || byteAt(1) > high) return 0;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  for (std::size_t i = 2; i < length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return 0;
  }
  return length;
}

}  // namespace

std::size_t FindInvalidUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = SequenceLength(text.substr(i));
    if (length == 0) return i;
    i += length;
  }
  return std::string_view::npos;
}

}  // namespace mapexport
