#include "importer/SourceFormat.h"

#include <array>

namespace mapexport {
namespace {

struct Reader {
  std::string_view nameStart;
  SourceFormat format;
};

constexpr std::array<Reader, 18> kReaders{{
    {"Autodesk FBX", SourceFormat::kFbx},
    {"AC3D", SourceFormat::kAc3d},
    {"glTF", SourceFormat::kGltf1},
    {"Collada", SourceFormat::kCollada},
    {"Wavefront Object", SourceFormat::kObj},
    {"OFF", SourceFormat::kOff},
    {"Stanford Polygon Library", SourceFormat::kPly},
    {"Stereolithography", SourceFormat::kOtherZUp},
    {"Blender", SourceFormat::kOtherZUp},
    {"3mf", SourceFormat::kOtherZUp},
    {"Discreet 3DS", SourceFormat::k3ds},
    {"ASE", SourceFormat::kAse},
    {"Quake II Mesh", SourceFormat::kTurnedToYUp},
    {"Quake III Mesh", SourceFormat::kTurnedToYUp},
    {"Doom 3 / MD5", SourceFormat::kTurnedToYUp},
    {"Return To Castle Wolfenstein", SourceFormat::kTurnedToYUp},
    {"Extensible 3D", SourceFormat::kX3d},
    {"Additive manufacturing", SourceFormat::kOtherZUp},
}};

}  // namespace

SourceFormat FormatOfReader(std::string_view reader) {
  for (const Reader& entry : kReaders) {
    if (reader.starts_with(entry.nameStart)) return entry.format;
  }
  return SourceFormat::kOtherYUp;
}

bool IsZUp(SourceFormat format) {
  return format == SourceFormat::kPly || format == SourceFormat::kOtherZUp;
}

bool IsInMetres(SourceFormat format) {
  return format == SourceFormat::kGltf1 || format == SourceFormat::kGltf2 ||
         format == SourceFormat::kCollada || format == SourceFormat::kX3d;
}

}  // namespace mapexport
