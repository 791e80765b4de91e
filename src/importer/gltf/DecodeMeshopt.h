// EXT_meshopt_compression.
#pragma once

#include <string>
#include <string_view>

#include "importer/gltf/GltfDocument.h"

namespace mapexport {

/// Decompresses the data of a buffer view. Returns what is wrong with it as ".MEMBER: REASON" or
/// ": REASON", or nothing, and then has set `bytes`. Indices that come out may be of any size.
std::string DecodeMeshopt(const GltfMeshopt& source, std::string_view data, std::string& bytes);

}  // namespace mapexport
