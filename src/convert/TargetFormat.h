// The formats that a model file can be converted to.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace mapexport {

/// What a format can hold, and the space that its readers expect.
struct TargetFormat {
  std::string_view extension;  ///< with its dot, in lower case
  const char* libraryId;       ///< the export library's name for the format
  const char* aloneId;         ///< the same for a single file; null when a second file is needed
  bool yUp;                    ///< y points up; else z, as in the host
  double hostUnits;            ///< host units per unit of the format
  bool hasNodes;               ///< else all geometry becomes one mesh
  bool joinsMeshes;            ///< those of a node become one, with the name of the first
  bool hasTwoSidedMaterials;
  bool hasColours;         ///< of corners
  bool multipliesColours;  ///< a corner's colour is multiplied by that of the material
};

std::span<const TargetFormat> TargetFormats();

/// The format by the extension of `path`, in any case; null when there is none.
const TargetFormat* FindTargetFormat(std::string_view path);
/// The format with the extension `name`, without a dot; null for none.
const TargetFormat* FindNamedFormat(std::string_view name);

}  // namespace mapexport
