// Packs a model into the block of bytes that the page reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "modelreader/ModelFile.h"
#include "view/ViewComparison.h"

namespace mapexport {

/// What the page gets in addition to the model.
struct ViewInfo {
  std::string fileName = {};  ///< the name to show; any encoding
  int coordinateSystem = 0;   ///< 0 to 3: the coordinate system that the file is assumed to be in
  const ViewComparison* comparison = nullptr;  ///< with another model; null for none
  /// By the names of textures, PNG files for the page to show. Nothing: it is not to show any.
  std::optional<std::map<std::string, std::string>> textures = {};
};

/// The bytes that viewer/src/readModel.js reads. All numbers are little-endian and every item
/// begins at a multiple of 4 bytes, so that the page can view lists without copying. Positions,
/// planes and texture coordinates are unchanged. Corner normals, which only shade, become 8 bits
/// per component; colours are clamped to 0 to 1 and become 8 bits per channel.
std::vector<std::byte> MakeModelBlock(const ModelFile& model, const ViewInfo& info);

/// The bytes that MakeModelBlock needs for the lists of `model`, without names.
std::uint64_t ModelBlockBytes(const ModelFile& model);

}  // namespace mapexport
