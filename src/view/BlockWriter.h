// Appends the items of a model block: little-endian, each at a multiple of 4 bytes.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace mapexport {

class BlockWriter {
 public:
  void U32(std::uint32_t number) {
    U16(static_cast<std::uint16_t>(number));
    U16(static_cast<std::uint16_t>(number >> 16));
  }
  void I32(std::int32_t number) { U32(static_cast<std::uint32_t>(number)); }
  void F32(float number) { U32(std::bit_cast<std::uint32_t>(number)); }
  /// The length in bytes, then the bytes.
  void Text(std::string_view text) {
    Count(text.size());
    const auto bytes = std::as_bytes(std::span(text));
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    Align();
  }
  /// The length of a list; lists of model files have lengths of 32 bits.
  void Count(std::size_t count) { U32(static_cast<std::uint32_t>(count)); }

  // Parts of an item, which Align() completes.
  void U8(std::uint8_t number) { bytes_.push_back(std::byte{number}); }
  void U16(std::uint16_t number) {
    const std::array bytes{static_cast<std::byte>(number), static_cast<std::byte>(number >> 8)};
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
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
