#include "importer/obj/ReadMtlFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "importer/text/HostText.h"
#include "importer/text/Numbers.h"
#include "importer/text/StatementLines.h"
#include "importer/text/TexturePath.h"
#include "system/Ascii.h"

namespace mapexport {
namespace {

constexpr float kPlainDiffuse = 0.6f;

/// Shading modes in the numbers of the import library, as from other formats.
enum ShadingMode { kGouraud = 2, kPhong = 3, kUnlitModel = 9 };

struct MapOption {
  std::string_view name;
  std::size_t mostValues;
};

constexpr std::array<MapOption, 12> kMapOptions{{{"-o", 3},
                                                 {"-s", 3},
                                                 {"-t", 3},
                                                 {"-mm", 2},
                                                 {"-blendu", 1},
                                                 {"-blendv", 1},
                                                 {"-clamp", 1},
                                                 {"-boost", 1},
                                                 {"-bm", 1},
                                                 {"-texres", 1},
                                                 {"-imfchan", 1},
                                                 {"-type", 1}}};

class MtlReader {
 public:
  explicit MtlReader(MtlMaterials& into) : into_(into) {}

  void Run(std::string_view text) {
    StatementLines lines(text);
    while (lines.Next()) {
      std::string_view rest = lines.Statement();
      const std::string keyword = LowerCase(TakeWord(rest));
      if (keyword == "newmtl")
        Begin(rest);
      else if (material_ != nullptr)
        ReadStatement(keyword, rest);
    }
  }

 private:
  void Begin(std::string_view name) {
    const auto [entry, isNew] =
        into_.indexOf.try_emplace(std::string(name), static_cast<int>(into_.materials.size()));
    hasOpacity_ = false;
    if (isNew) {
      into_.materials.push_back(PlainMtlMaterial(name));
      material_ = &into_.materials.back();
    } else {
      ++into_.repeated;
      material_ = nullptr;
    }
  }

  void ReadStatement(const std::string& keyword, std::string_view rest) {
    if (keyword == "ka") {
      ReadColour(rest, material_->ambient);
    } else if (keyword == "kd") {
      ReadColour(rest, material_->diffuse);
    } else if (keyword == "ks") {
      ReadColour(rest, material_->specular);
    } else if (keyword == "ns") {
      if (const auto value = ReadNumber(TakeWord(rest))) material_->shininess = *value;
    } else if (keyword == "d") {
      std::string_view word = TakeWord(rest);
      if (word == "-halo") word = TakeWord(rest);
      SetOpacity(ReadNumber(word), false);
      hasOpacity_ = true;
    } else if (keyword == "tr" && !hasOpacity_) {
      SetOpacity(ReadNumber(TakeWord(rest)), true);
    } else if (keyword == "illum") {
      const std::string_view word = TakeWord(rest);
      material_->shading = word == "0" ? kUnlitModel : word == "2" ? kPhong : kGouraud;
    } else if (keyword == "map_kd") {
      ReadMap(rest);
    }
  }

  std::optional<float> ReadNumber(std::string_view word) {
    const std::optional<float> value = DecimalNumber(word);
    if (value && std::isfinite(*value)) return value;
    ++into_.unreadable;
    return std::nullopt;
  }

  /// A single number is used for all three.
  void ReadColour(std::string_view rest, Color& colour) {
    const std::optional<float> r = ReadNumber(TakeWord(rest));
    if (!r) return;
    const std::optional<float> g = rest.empty() ? r : ReadNumber(TakeWord(rest));
    const std::optional<float> b = rest.empty() ? g : ReadNumber(TakeWord(rest));
    if (g && b) colour = {*r, *g, *b};
  }

  void SetOpacity(std::optional<float> value, bool isTransparency) {
    if (!value) return;
    material_->opacity = std::clamp(isTransparency ? 1.0f - *value : *value, 0.0f, 1.0f);
  }

  void ReadMap(std::string_view rest) {
    Point3 scale{1, 1, 1};
    Point3 offset;
    while (rest.starts_with('-')) {
      std::string_view behind = rest;
      const std::string name = LowerCase(TakeWord(behind));
      const auto option = std::ranges::find(kMapOptions, name, &MapOption::name);
      if (option == kMapOptions.end()) break;
      rest = behind;
      if (option->mostValues == 1 || name == "-mm") {
        for (std::size_t i = 0; i < option->mostValues; ++i) TakeWord(rest);
      } else {
        const Point3 values = TakeUpToThree(rest, name == "-s" ? scale : offset);
        if (name == "-s") scale = values;
        if (name == "-o") offset = values;
      }
    }
    SceneTexture texture;
    texture.file = NormalisedTexturePath(ValidUtf8(rest));
    if (texture.file.empty()) return;
    Matrix3 transform;
    transform.rows = {Point3{scale.x, 0, 0}, Point3{0, scale.y, 0}, Point3{0, 0, scale.z}, offset};
    if (transform != Matrix3{}) texture.uvTransform = transform;
    material_->diffuseMap = std::move(texture);
  }

  /// The second and the third number may be left off; the file name follows.
  Point3 TakeUpToThree(std::string_view& rest, Point3 values) {
    for (float* const value : {&values.x, &values.y, &values.z}) {
      std::string_view behind = rest;
      const std::optional<float> number = DecimalNumber(TakeWord(behind));
      // The last word of all is the file's name, even if it looks like a number.
      if (!number || behind.empty()) break;
      rest = behind;
      if (std::isfinite(*number))
        *value = *number;
      else
        ++into_.unreadable;
    }
    return values;
  }

  MtlMaterials& into_;
  SceneMaterial* material_ = nullptr;  // null before the first one and in a repeated one
  bool hasOpacity_ = false;            // "d" wins over "Tr"
};

}  // namespace

SceneMaterial PlainMtlMaterial(std::string_view name) {
  SceneMaterial material;
  material.name = ValidUtf8(name);
  material.diffuse = {kPlainDiffuse, kPlainDiffuse, kPlainDiffuse};
  material.shading = kGouraud;
  return material;
}

void ReadMtlFile(std::string_view text, MtlMaterials& into) {
  MtlReader(into).Run(text);
}

}  // namespace mapexport
