// The header of every record of a model file.
#pragma once

#include <cstdint>

#include "exporter/modelwriter/BinaryWriter.h"
#include "host/CStr.h"

namespace mapexport {

/// Writes the type code, the text "Version", the version and the name.
inline void WriteRecordHeader(BinaryWriter& out, std::uint32_t typeCode, std::uint32_t version,
                              const CStr& name) {
  out.U32(typeCode);
  out.LString("Version");
  out.U32(version);
  out.LString(name.View());
}

}  // namespace mapexport
