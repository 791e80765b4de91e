// A whole model file.
#pragma once

#include <ostream>

#include "exporter/geometry/GroupList.h"
#include "exporter/materials/MaterialsList.h"
#include "exporter/modelwriter/BinaryWriter.h"

namespace mapexport {

/// What writes one group: WriteQobRecord or WriteKobRecord.
using WriteGroupRecord = void(GeometryGroup& group, BinaryWriter& out);

/// Writes the start tag, the material chunk, the geometry chunk with one record per group, and the
/// end tag to a seekable binary stream.
void WriteModelFile(const MaterialsList& materials, const GroupList& groups,
                    WriteGroupRecord* writeGroup, std::ostream& stream);

}  // namespace mapexport
