// The faces and wire colours of the objects of an .ase file.
#include <charconv>
#include <cmath>
#include <cstddef>
#include <optional>
#include <system_error>

#include "importer/ase/ReadAse.h"
#include "importer/text/Numbers.h"
#include "importer/text/StatementLines.h"

namespace mapexport {
namespace {

std::optional<std::uint32_t> Whole(std::string_view word) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc{} || end == word.data()) return std::nullopt;
  return number;
}

/// "*MESH_FACE 0: A: 0 B: 1 C: 2 AB: 1 BC: 1 CA: 0 *MESH_SMOOTHING 1,3 *MESH_MTLID 2"; without a
/// group, nothing follows *MESH_SMOOTHING.
FileFaces::FileFace FaceOf(std::string_view rest) {
  FileFaces::FileFace face;
  while (!rest.empty()) {
    const std::string_view key = TakeWord(rest);
    if (key == "*MESH_SMOOTHING") {
      face.isFlat = Whole(rest).value_or(0) == 0;  // groups count from 1
    } else if (key == "*MESH_MTLID") {
      face.part = Whole(rest).value_or(0);
    }
  }
  return face;
}

/// "0.5 0.25 1.0" as parts of 255; empty when these aren't three numbers from 0 to 1.
std::optional<std::array<std::uint8_t, 3>> ColourOf(std::string_view rest) {
  std::array<std::uint8_t, 3> colour{};
  for (std::uint8_t& part : colour) {
    const std::optional<float> number = DecimalNumber(TakeWord(rest));
    if (!number || !(*number >= 0.0f && *number <= 1.0f)) return std::nullopt;
    part = static_cast<std::uint8_t>(std::lround(*number * 255.0f));
  }
  return colour;
}

}  // namespace

AseFaces ReadAseFaces(std::string_view text) {
  AseFaces file;
  bool isInObject = false;
  bool isInAnimation = false;
  StatementLines lines(text);
  while (lines.Next()) {
    std::string_view rest = lines.Statement();
    if (rest.front() != '*') continue;
    const std::string_view key = TakeWord(rest);
    if (key == "*MATERIAL") {
      file.subMaterials.push_back(0);
    } else if (key == "*SUBMATERIAL" && !file.subMaterials.empty()) {
      ++file.subMaterials.back();
    } else if (key == "*GEOMOBJECT") {
      file.meshes.emplace_back();
      isInObject = true;
      isInAnimation = false;
    } else if (key == "*MESH_ANIMATION") {
      isInAnimation = true;  // its meshes are none of the object's
    } else if (key == "*MATERIAL_REF" && isInObject) {
      file.meshes.back().material = Whole(rest).value_or(FileFaces::kNoPart);
    } else if (key == "*MESH_FACE" && isInObject && !isInAnimation) {
      file.meshes.back().faces.push_back(FaceOf(rest));
    }
  }
  return file;
}

WireColours ReadAseWireColours(std::string_view text) {
  WireColours colours;
  std::string name;
  StatementLines lines(text);
  while (lines.Next()) {
    std::string_view rest = lines.Statement();
    if (!rest.starts_with("*NODE_NAME") && !rest.starts_with("*WIREFRAME_COLOR")) continue;
    if (TakeWord(rest) == "*NODE_NAME") {
      const std::size_t quote = rest.find('"');
      if (quote == std::string_view::npos) continue;
      rest.remove_prefix(quote + 1);
      name = rest.substr(0, rest.find('"'));
    } else if (const auto colour = ColourOf(rest)) {
      colours.try_emplace(name, *colour);
    }
  }
  return colours;
}

}  // namespace mapexport
