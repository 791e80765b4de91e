#include "convert/TargetFormat.h"

#include <algorithm>
#include <array>

#include "system/Ascii.h"

namespace mapexport {

namespace {

// The axes and units are those that the importer assumes for the formats.
constexpr std::array kFormats{
    TargetFormat{".glb", "glb2", "glb2", true, 100, true, true, true, true, true},
    TargetFormat{".gltf", "gltf2", nullptr, true, 100, true, true, true, true, true},
    TargetFormat{".obj", "obj", "objnomtl", true, 1, true, false, false, false, false},
    TargetFormat{".ply", "ply", "ply", false, 1, false, false, false, true, false},
    TargetFormat{".stl", "stlb", "stlb", false, 1, false, false, false, false, false},
};

}  // namespace

std::span<const TargetFormat> TargetFormats() {
  return kFormats;
}

const TargetFormat* FindTargetFormat(std::string_view path) {
  const auto endsIn = [path](const TargetFormat& format) {
    return path.size() > format.extension.size() && EndsInAnyCase(path, format.extension);
  };
  const auto* const found = std::ranges::find_if(kFormats, endsIn);
  return found == kFormats.end() ? nullptr : found;
}

const TargetFormat* FindNamedFormat(std::string_view name) {
  const auto* const found = std::ranges::find_if(
      kFormats, [name](const TargetFormat& format) { return format.extension.substr(1) == name; });
  return found == kFormats.end() ? nullptr : found;
}

}  // namespace mapexport
