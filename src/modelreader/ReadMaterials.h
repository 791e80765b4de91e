// Reads the materials list of a model file.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "modelreader/ByteReader.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// Reads the list into `materials`. `count` receives what the list gives as its count, as soon as
/// that is read: material indices can be judged by it even when a record can't be read.
void ReadMaterials(ByteReader& in, std::vector<ModelMaterial>& materials,
                   std::optional<std::uint32_t>& count);

}  // namespace mapexport
