// A model as the block of bytes that the page reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// What the page is told beside the model.
struct ViewInfo {
  std::string fileName;      ///< of the model, to be shown; any encoding
  int coordinateSystem = 0;  ///< 0 to 3: the one that the file's coordinates are taken to be in
};

/// The bytes that viewer/src/readModel.js takes apart. All numbers are little-endian and every item
/// begins at a multiple of 4 bytes, so that the page can look at lists in place. Positions, planes
/// and texture coordinates are kept as they are; normals of corners, which only shade, become
/// 8 bits a component, and colours 8 bits a channel, clamped to 0 to 1.
std::vector<std::byte> MakeModelBlock(const ModelFile& model, const ViewInfo& info);

/// How many bytes MakeModelBlock needs for the lists of `model`, names left out.
std::uint64_t ModelBlockBytes(const ModelFile& model);

}  // namespace mapexport
