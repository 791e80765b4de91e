// The source formats that the importer treats differently.
#pragma once

#include <string_view>

namespace mapexport {

enum class SourceFormat {
  k3ds,
  kAc3d,
  kAse,
  kCollada,
  kFbx,
  kGltf1,
  kGltf2,
  kObj,
  kOff,
  kPly,
  kX3d,
  kTurnedToYUp,  ///< z is up in the file, but the library turns the root: y up in its scene
  kOtherYUp,     ///< y up in the library's scene, by definition or as the default
  kOtherZUp      ///< z up in the library's scene
};

/// The format of the library's reader with that name; kOtherYUp for an unknown one, as the library
/// documents its readers.
SourceFormat FormatOfReader(std::string_view reader);

/// Whether z points up in the library's scene; in all others y does.
bool IsZUp(SourceFormat format);

/// Whether the library's scene is in metres.
bool IsInMetres(SourceFormat format);

}  // namespace mapexport
