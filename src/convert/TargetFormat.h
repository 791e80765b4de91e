// The formats that a model file can be converted to.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace mapexport {

/// What a format can hold, and the space that its readers expect.
struct TargetFormat {
  std::string_view extension;  ///< with its dot, in lower case
  const char* libraryId;       ///< what the export library calls the format
  const char* aloneId;         ///< the same without a second file; null when it needs one
  bool yUp;                    ///< else z points up, as in the host
  double hostUnits;            ///< host units per unit of the format
  bool hasNodes;               ///< else everything becomes one mesh
  bool hasTwoSidedMaterials;
  bool hasColours;         ///< of corners
  bool multipliesColours;  ///< shows a corner in its colour times that of the material
};

std::span<const TargetFormat> TargetFormats();

/// The format by the extension of `path`, in any case; null when there is none.
const TargetFormat* FindTargetFormat(std::string_view path);
/// The format whose extension is `name`, which has no dot; null when there is none.
const TargetFormat* FindNamedFormat(std::string_view name);

}  // namespace mapexport
