// Whether values are the same to the last bit: 0 and -0 differ, a NaN is the same as itself.
#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

namespace mapexport {

// For types without padding.

template <class T>
bool SameBits(std::span<const T> a, std::span<const T> b) {
  static_assert(std::is_trivially_copyable_v<T>);
  return std::ranges::equal(std::as_bytes(a), std::as_bytes(b));
}

template <class T>
bool SameBits(const std::vector<T>& a, const std::vector<T>& b) {
  return SameBits(std::span(a), std::span(b));
}

template <class T>
bool SameBits(const T& a, const T& b) {
  return SameBits(std::span(&a, 1), std::span(&b, 1));
}

inline bool SameBits(const std::string& a, const std::string& b) {
  return a == b;
}

}  // namespace mapexport
