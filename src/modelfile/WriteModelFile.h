// A whole model file.
#pragma once

#include <ostream>

#include "geometry/GroupList.h"
#include "materials/MaterialsList.h"
#include "modelfile/BinaryWriter.h"

namespace mapexport {

/// What writes one group: WriteQobRecord or WriteKobRecord.
using WriteGroupRecord = void(GeometryGroup& group, BinaryWriter& out);

/// Writes the start tag, the material chunk, the geometry chunk with one record per group, and the
/// end tag to a seekable binary stream.
void WriteModelFile(const MaterialsList& materials, const GroupList& groups,
                    WriteGroupRecord* writeGroup, std::ostream& stream);

}  // namespace mapexport
