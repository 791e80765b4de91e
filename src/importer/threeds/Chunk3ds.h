// The chunks of which a .3ds file consists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "importer/text/Numbers.h"

namespace mapexport {

inline constexpr std::size_t kChunkHeader3ds = 6;
inline constexpr std::uint16_t kMain3ds = 0x4D4D;    ///< holds the whole file
inline constexpr std::uint16_t kEditor3ds = 0x3D3D;  ///< in it: materials and objects

struct Chunk3ds {
  std::uint16_t id = 0;
  std::size_t announced = 0;  ///< size of the content in bytes, as the header says
  std::string_view content;   ///< shorter where the list ends before
};

/// Removes the next chunk from `list` and returns it; empty at the end.
inline std::optional<Chunk3ds> TakeChunk3ds(std::string_view& list) {
  const std::optional<std::uint16_t> id = NumberAt<std::uint16_t>(list, 0);
  const std::optional<std::uint32_t> size = NumberAt<std::uint32_t>(list, sizeof(*id));
  if (!id || !size) return std::nullopt;
  list.remove_prefix(kChunkHeader3ds);
  const std::size_t announced = *size < kChunkHeader3ds ? 0 : *size - kChunkHeader3ds;
  const Chunk3ds chunk{*id, announced, list.substr(0, announced)};
  list.remove_prefix(chunk.content.size());
  return chunk;
}

}  // namespace mapexport
