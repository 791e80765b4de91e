// Appends the items of a model block: little-endian, each at a multiple of 4 bytes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace mapexport {

class BlockWriter {
 public:
  void U32(std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) U8(static_cast<std::uint8_t>(number >> shift));
  }
  void I32(std::int32_t number) { U32(static_cast<std::uint32_t>(number)); }
  void F32(float number) { U32(std::bit_cast<std::uint32_t>(number)); }
  /// The length in bytes, then the bytes.
  void Text(std::string_view text) {
    Count(text.size());
    for (const char c : text) U8(static_cast<std::uint8_t>(c));
    Align();
  }
  /// The length of a list; lists of model files have lengths of 32 bits.
  void Count(std::size_t count) { U32(static_cast<std::uint32_t>(count)); }

  // Parts of an item, which Align() completes.
  void U8(std::uint8_t number) { bytes_.push_back(std::byte{number}); }
  void U16(std::uint16_t number) {
    U8(static_cast<std::uint8_t>(number));
    U8(static_cast<std::uint8_t>(number >> 8));
  }
  void Align() {
    while (bytes_.size() % 4 != 0) U8(0);
  }

  void Reserve(std::size_t bytes) { bytes_.reserve(bytes); }
  std::vector<std::byte> Take() { return std::move(bytes_); }

 private:
  std::vector<std::byte> bytes_;
};

}  // namespace mapexport
