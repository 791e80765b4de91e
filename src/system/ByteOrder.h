// The byte order of files: little-endian in every format that is read or written. Side B reads and
// writes numbers through this file only, so that all others work on any processor.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>

namespace mapexport {

/// Whether numbers in memory have the bytes that they have in files.
inline constexpr bool kMemoryIsFileOrder = std::endian::native == std::endian::little;

/// Turns numbers of this processor, `size` bytes each, into those of a file, or back.
inline void ToFileOrder(std::span<std::byte> bytes, std::size_t size) {
  if constexpr (kMemoryIsFileOrder) return;
  for (; bytes.size() >= size; bytes = bytes.subspan(size)) {
    std::ranges::reverse(bytes.first(size));
  }
}
template <class Number, std::size_t extent>
void ToFileOrder(std::span<Number, extent> numbers) {
  ToFileOrder(std::as_writable_bytes(numbers), sizeof(Number));
}

/// The number whose bytes in a file begin at `bytes`.
template <class Number>
Number FileNumber(const char* bytes) {
  Number number{};
  std::memcpy(&number, bytes, sizeof number);
  ToFileOrder(std::span(&number, 1));
  return number;
}

}  // namespace mapexport
