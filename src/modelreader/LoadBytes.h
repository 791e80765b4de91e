// Loads a model file into memory.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "modelreader/ProblemList.h"

namespace mapexport {

struct LoadedBytes {
  std::unique_ptr<std::byte[]> data;
  std::size_t size = 0;

  std::span<const std::byte> View() const { return {data.get(), size}; }
};

/// Reads the regular file at `path`, which must be smaller than 4 GiB. When that fails, adds a
/// problem with the reason. The bytes are a copy, not a mapping: another program may shorten the
/// file meanwhile. When `isWanted` refuses the first bytes (at most 64), the rest is not read.
std::optional<LoadedBytes> LoadBytes(const std::string& path,
                                     bool (*isWanted)(std::span<const std::byte> beginning),
                                     ProblemList& problems);

}  // namespace mapexport
