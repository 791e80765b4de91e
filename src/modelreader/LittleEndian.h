// Numbers out of little-endian bytes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace mapexport {

inline std::uint16_t U16At(const std::byte* bytes) {
  return static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[0]) |
                                    std::to_integer<unsigned>(bytes[1]) << 8);
}

inline std::uint32_t U32At(const std::byte* bytes) {
  return std::to_integer<std::uint32_t>(bytes[0]) | std::to_integer<std::uint32_t>(bytes[1]) << 8 |
         std::to_integer<std::uint32_t>(bytes[2]) << 16 |
         std::to_integer<std::uint32_t>(bytes[3]) << 24;
}

inline float F32At(const std::byte* bytes) {
  return std::bit_cast<float>(U32At(bytes));
}

}  // namespace mapexport
