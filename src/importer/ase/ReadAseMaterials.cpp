// The materials of an .ase file.
#include <array>
#include <cstddef>

#include "importer/ase/ReadAse.h"
#include "importer/text/Numbers.h"
#include "importer/text/StatementLines.h"

namespace mapexport {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// Shading modes in the numbers of the import library; it takes all others for Gouraud's.
struct Shading {
  std::string_view name;
  int mode;
};
constexpr std::array<Shading, 3> kShadings{{{"Flat", 1}, {"Phong", 3}, {"Blinn", 4}}};
constexpr int kGouraud = 2;

std::optional<float> NumberIn(std::string_view rest) {
  return DecimalNumber(TakeWord(rest));
}

std::optional<Color> ColourIn(std::string_view rest) {
  const std::optional<float> r = DecimalNumber(TakeWord(rest));
  const std::optional<float> g = DecimalNumber(TakeWord(rest));
  const std::optional<float> b = DecimalNumber(TakeWord(rest));
  if (!r || !g || !b) return std::nullopt;
  return Color{*r, *g, *b};
}

int ShadingNamed(std::string_view name) {
  for (const Shading& shading : kShadings) {
    if (shading.name == name) return shading.mode;
  }
  return kGouraud;
}

void ReadProperty(std::string_view key, std::string_view rest, FileMaterial& material) {
  if (key == "*MATERIAL_NAME") {
    if (!rest.starts_with('"')) return;
    rest.remove_prefix(1);
    material.name = rest.substr(0, rest.find('"'));
  } else if (key == "*MATERIAL_AMBIENT") {
    material.ambient = ColourIn(rest);
  } else if (key == "*MATERIAL_DIFFUSE") {
    material.diffuse = ColourIn(rest);
  } else if (key == "*MATERIAL_SHINE") {
    material.shininess = NumberIn(rest);
  } else if (key == "*MATERIAL_SHINESTRENGTH") {
    material.shininessStrength = NumberIn(rest);
  } else if (key == "*MATERIAL_SHADING") {
    material.shading = ShadingNamed(TakeWord(rest));
  } else if (key == "*MATERIAL_TWOSIDED") {
    material.twoSided = true;
  }
}

}  // namespace

int AseDepthChange(std::string_view line) {
  int change = 0;
  bool isInText = false;
  for (const char c : line) {
    if (c == '"') isInText = !isInText;
    if (isInText) continue;
    change += c == '{' ? 1 : c == '}' ? -1 : 0;
  }
  return change;
}

std::vector<FileMaterial> ReadAseMaterials(std::string_view text) {
  std::vector<FileMaterial> materials;
  // The material whose block is open at depth 2, and its sub-material at depth 3.
  std::size_t outer = kNone;
  std::size_t inner = kNone;
  bool isInList = false;
  int depth = 0;
  StatementLines lines(text);
  while (lines.Next()) {
    std::string_view rest = lines.Statement();
    const int change = AseDepthChange(rest);
    const std::string_view key = TakeWord(rest);
    if (depth == 0) isInList = key == "*MATERIAL_LIST";
    const bool begins = isInList && (depth == 1   ? key == "*MATERIAL"
                                     : depth == 2 ? key == "*SUBMATERIAL"
                                                  : false);
    if (begins) {
      (depth == 1 ? outer : inner) = materials.size();
      materials.emplace_back();
    } else if (isInList && (depth == 2 || depth == 3)) {
      const std::size_t current = depth == 2 ? outer : inner;
      if (current != kNone) ReadProperty(key, rest, materials[current]);
    }
    depth += change;
    if (depth < 3) inner = kNone;
    if (depth < 2) outer = kNone;
    if (depth < 0) break;
  }
  return materials;
}

}  // namespace mapexport
