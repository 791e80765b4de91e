#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

#include "importer/text/Numbers.h"
#include "importer/threeds/Chunk3ds.h"
#include "importer/threeds/Read3ds.h"

namespace mapexport {
namespace {

enum ChunkId : std::uint16_t {
  kColour = 0x0010,
  kColourBytes = 0x0011,
  kLinearColourBytes = 0x0012,
  kLinearColour = 0x0013,
  kPercent = 0x0030,
  kPercentFloat = 0x0031,
  kMaterialName = 0xA000,
  kAmbient = 0xA010,
  kDiffuse = 0xA020,
  kShininess = 0xA040,
  kShininessStrength = 0xA041,
  kTransparency = 0xA050,
  kTwoSided = 0xA081,
  kShading = 0xA100,
  kMaterial = 0xAFFF
};

/// Shading modes of the import library by those of the format, which count from 0: wire, flat,
/// Gouraud, Phong, metal.
constexpr int kShadingModes[] = {2, 1, 2, 3, 8};

/// The first colour among the chunks of `content`.
std::optional<Color> ColourIn(std::string_view content) {
  while (const std::optional<Chunk3ds> chunk = TakeChunk3ds(content)) {
    const std::string_view bytes = chunk->content;
    if (chunk->id == kColour || chunk->id == kLinearColour) {
      const auto r = NumberAt<float>(bytes, 0);
      const auto g = NumberAt<float>(bytes, 4);
      const auto b = NumberAt<float>(bytes, 8);
      if (r && g && b) return Color{*r, *g, *b};
    } else if ((chunk->id == kColourBytes || chunk->id == kLinearColourBytes) &&
               bytes.size() >= 3) {
      const auto part = [&](std::size_t i) {
        return static_cast<float>(static_cast<unsigned char>(bytes[i])) / 255.0f;
      };
      return Color{part(0), part(1), part(2)};
    }
  }
  return std::nullopt;
}

/// The first percentage among the chunks of `content`, 0 to 100.
std::optional<float> PercentIn(std::string_view content) {
  while (const std::optional<Chunk3ds> chunk = TakeChunk3ds(content)) {
    if (chunk->id == kPercent) {
      if (const auto percent = NumberAt<std::uint16_t>(chunk->content, 0)) return *percent;
    } else if (chunk->id == kPercentFloat) {
      if (const auto part = NumberAt<float>(chunk->content, 0)) return *part * 100.0f;
    }
  }
  return std::nullopt;
}

FileMaterial MaterialIn(std::string_view content, std::size_t index) {
  FileMaterial material;
  // What the library calls one without a name.
  material.name = "UNNAMED_" + std::to_string(index);
  // A material without an ambient colour has none; the library gives it the scene's.
  material.ambient = Color{};
  while (const std::optional<Chunk3ds> chunk = TakeChunk3ds(content)) {
    const std::string_view bytes = chunk->content;
    switch (chunk->id) {
      case kMaterialName:
        if (const std::string_view name = bytes.substr(0, bytes.find('\0')); !name.empty()) {
          material.name = name;
        }
        break;
      case kAmbient:
        if (const std::optional<Color> colour = ColourIn(bytes)) material.ambient = colour;
        break;
      case kDiffuse:
        material.diffuse = ColourIn(bytes);
        break;
      case kShininess:
        material.shininess = PercentIn(bytes);
        break;
      case kShininessStrength:
        if (const std::optional<float> percent = PercentIn(bytes)) {
          material.shininessStrength = *percent / 100.0f;
        }
        break;
      case kTransparency:
        if (const std::optional<float> percent = PercentIn(bytes)) {
          material.opacity = 1.0f - *percent / 100.0f;
        }
        break;
      case kTwoSided:
        // The mark is that the chunk is there; it is empty, and the library passes over it.
        material.twoSided = true;
        break;
      case kShading:
        if (const auto mode = NumberAt<std::uint16_t>(bytes, 0)) {
          if (*mode < std::size(kShadingModes)) material.shading = kShadingModes[*mode];
        }
        break;
      default:
        break;
    }
  }
  return material;
}

}  // namespace

std::vector<FileMaterial> Read3dsMaterials(std::string_view bytes) {
  std::vector<FileMaterial> materials;
  while (const std::optional<Chunk3ds> main = TakeChunk3ds(bytes)) {
    if (main->id != kMain3ds) continue;
    std::string_view sections = main->content;
    while (const std::optional<Chunk3ds> section = TakeChunk3ds(sections)) {
      if (section->id != kEditor3ds) continue;
      std::string_view objects = section->content;
      while (const std::optional<Chunk3ds> object = TakeChunk3ds(objects)) {
        if (object->id != kMaterial || object->content.empty()) continue;
        materials.push_back(MaterialIn(object->content, materials.size()));
      }
    }
  }
  return materials;
}

}  // namespace mapexport
