// The formats that need rules of their own.
#include "importer/SourceFormat.h"

#include <algorithm>
#include <array>

#include "importer/FileExtension.h"

namespace mapexport {
namespace {

struct Reader {
  std::string_view nameStart;
  SourceFormat format;
};

constexpr std::array<Reader, 17> kReaders{{
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
    {"Additive manufacturing", SourceFormat::kOtherZUp},
}};

// glTF's buffers, LightWave's and Irrlicht's objects, the two halves of an Unreal mesh.
constexpr std::array<std::string_view, 5> kDataBeside{".gltf", ".lws", ".irr", ".3d", ".uc"};

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

bool HasDataBeside(const std::string& path) {
  return std::ranges::find(kDataBeside, FileExtension(path)) != kDataBeside.end();
}

bool IsInMetres(SourceFormat format) {
  return format == SourceFormat::kGltf1 || format == SourceFormat::kGltf2 ||
         format == SourceFormat::kCollada;
}

}  // namespace mapexport
