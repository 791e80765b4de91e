// Counts in messages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mapexport {

/// "1 batch", "3 batches", given "batch" and "batches".
inline std::string Counted(std::uint64_t count, std::string_view one, std::string_view many) {
  return std::to_string(count).append(" ").append(count == 1 ? one : many);
}

/// "1 triangle", "3 triangles", given "triangle".
inline std::string Counted(std::uint64_t count, std::string_view one) {
  return Counted(count, one, std::string(one) + "s");
}

}  // namespace mapexport
