// Model files for tests of the reader, written field after field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "modelreader/ReadModelFile.h"

namespace mapexport {

/// The bytes of a model file, and where its fields are.
struct FileBytes {
  std::vector<std::byte> bytes;
  std::map<std::string, std::size_t> offsets;  ///< by place, as the reader spells it

  void Put(std::size_t offset, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes.at(offset + i) = std::byte(value >> (8 * i));
  }
};

FileBytes BuildFile(const ModelFile& model);

/// Two materials, four vertices, two batches of two triangles and one; in the layout kKob an
/// undrawn triangle too, and three surface sets.
ModelFile Yard(ModelLayout layout);

/// `count` drawn triangles in one batch, each with its own vertices and corners cut to 16 bits, and
/// as many undrawn ones.
ModelFile Huge(std::size_t count, ModelLayout layout);

/// The model, written and read again.
ModelReadResult Read(const ModelFile& model);

/// What is wrong, a line for each problem.
std::string Lines(const ModelReadResult& result);

}  // namespace mapexport
