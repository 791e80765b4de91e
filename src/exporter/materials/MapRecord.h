// The base of every record: its name, type code and version.
#pragma once

#include <cstdint>

#include "host/CStr.h"

namespace mapexport {

// Type codes of the records.
inline constexpr std::uint32_t kMaterialType = 2;
inline constexpr std::uint32_t kGeometryGroupType = 3;
inline constexpr std::uint32_t kSurfaceSetType = 6;
inline constexpr std::uint32_t kSecondGroupType = 35;  ///< around a group of the second layout

/// Base of everything that has a record in the model file.
class MapRecord {
 public:
  MapRecord(std::uint32_t recordType, std::uint32_t recordVersion)
      : typeCode(recordType), version(recordVersion) {}
  virtual ~MapRecord() = default;
  MapRecord(const MapRecord&) = default;
  MapRecord(MapRecord&&) = default;
  MapRecord& operator=(const MapRecord&) = default;
  MapRecord& operator=(MapRecord&&) = default;

  CStr name = "NONE";
  std::uint32_t typeCode;
  std::uint32_t version;
};

}  // namespace mapexport
