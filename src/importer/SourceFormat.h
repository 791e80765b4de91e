// The formats that need rules of their own.
#pragma once

#include <string>
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
  kTurnedToYUp,  ///< its z is up, but the library turned the root: arrives with y up
  kOtherYUp,     ///< arrives with y up, by definition or for want of an axis
  kOtherZUp      ///< arrives with z up
};

/// The format of the library's reader of that name; an unknown reader counts as kOtherYUp, which is
/// what the library promises of its readers.
SourceFormat FormatOfReader(std::string_view reader);

/// Whether z points up in what arrives; y does in all others.
bool IsZUp(SourceFormat format);

/// Whether `path` names a format, by its extension, that keeps the scene's geometry in other files,
/// so that its own size tells nothing. Materials, textures and animations beside it don't count.
bool HasDataBeside(const std::string& path);

/// Whether lengths of this format arrive in metres.
bool IsInMetres(SourceFormat format);

}  // namespace mapexport
