// Numbers in the bytes of binary files.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

namespace mapexport {

/// The little-endian number at `at`; empty when it isn't wholly within `bytes`.
template <class T>
std::optional<T> NumberAt(std::string_view bytes, std::size_t at) {
  static_assert(std::endian::native == std::endian::little);
  if (bytes.size() < sizeof(T) || at > bytes.size() - sizeof(T)) return std::nullopt;
  T value{};
  std::memcpy(&value, bytes.data() + at, sizeof(T));
  return value;
}

}  // namespace mapexport
