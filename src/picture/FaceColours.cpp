#include "picture/FaceColours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace mapexport {
namespace {

constexpr Rgb kNoColour{150, 152, 156};

constexpr double kGoldenAngle = 137.508;
constexpr double kFirstHue = 205;
constexpr std::array kSaturations{0.62, 0.45, 0.72};
constexpr std::array kLightnesses{0.58, 0.7, 0.46};

Rgb FromHsl(double hue, double saturation, double lightness) {
  const auto channel = [&](double n) {
    const double k = std::fmod(n + hue / 30, 12);
    const double a = saturation * std::min(lightness, 1 - lightness);
    const double value = lightness - a * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
    return static_cast<std::uint8_t>(std::floor(255 * value + 0.5));
  };
  return {channel(0), channel(8), channel(4)};
}

using FlagColours = std::map<std::uint32_t, Rgb>;

/// The different flags of the sets, each with a colour; grey for sets without flags.
FlagColours ColoursOfFlags(const ModelFile& model) {
  FlagColours colours{{0, kNoColour}};
  for (const ModelGroup& group : model.groups) {
    for (const ModelSurfaceSet& set : group.surfaceSets) {
      const auto next = static_cast<std::int64_t>(colours.size()) - 1;
      colours.try_emplace(set.flags, DistinctColour(next));
    }
  }
  return colours;
}

/// By batch and face. Faces that no row of the face table means are grey.
std::vector<std::vector<Rgb>> ColourByTable(const ModelGroup& group, const FlagColours& colours) {
  std::vector<std::vector<Rgb>> table;
  std::vector<std::vector<bool>> known;
  for (const ModelBatch& batch : group.batches) {
    table.emplace_back(std::max<std::size_t>(1, batch.faces.size()), kNoColour);
    known.emplace_back(batch.faces.size());
  }
  for (const ModelFace& face : group.faces) {
    const auto batch = static_cast<std::size_t>(face.batch);  // -1 becomes too large
    if (batch >= table.size()) continue;
    // Positions have 16 bits: in a longer batch, the next free face with the same low bits counts.
    std::size_t position = face.position;
    while (position < known[batch].size() && known[batch][position]) position += kModelIndexLimit;
    if (position >= known[batch].size()) continue;
    known[batch][position] = true;
    if (face.surfaceSet >= group.surfaceSets.size()) continue;
    table[batch][position] = colours.at(group.surfaceSets[face.surfaceSet].flags);
  }
  return table;
}

/// Null for none.
const ModelMaterial* MaterialOf(const ModelFile& model, const ModelBatch& batch) {
  const auto at = static_cast<std::size_t>(batch.material);  // -1 becomes too large
  return at < model.materials.size() ? &model.materials[at] : nullptr;
}

Rgb ToBytes(const ModelColour& colour) {
  const auto channel = [](float value) {
    const double known = std::isfinite(value) ? std::clamp(value, 0.0F, 1.0F) : 0;
    return static_cast<std::uint8_t>(std::floor(255 * known + 0.5));
  };
  return {channel(colour.r), channel(colour.g), channel(colour.b)};
}

/// Without a material, a face has the colour of its first corner.
std::vector<Rgb> DiffuseColours(const ModelMaterial* material, const ModelBatch& batch) {
  if (material != nullptr) return {ToBytes(material->diffuse)};
  std::vector<Rgb> colours(std::max<std::size_t>(1, batch.faces.size()), kNoColour);
  for (std::size_t i = 0; i < batch.faces.size(); ++i) {
    const std::size_t corner = batch.faces[i].corners[0];
    if (corner < batch.corners.size()) colours[i] = ToBytes(batch.corners[corner].colour);
  }
  return colours;
}

}  // namespace

Rgb DistinctColour(std::int64_t index) {
  if (index < 0) return kNoColour;
  const auto at = static_cast<std::size_t>(index);
  return FromHsl(std::fmod(static_cast<double>(index) * kGoldenAngle + kFirstHue, 360),
                 kSaturations[at % kSaturations.size()],
                 kLightnesses[at / 2 % kLightnesses.size()]);
}

FaceColours::FaceColours(const ModelFile& model, Colouring colouring, TextureImages images)
    : model_(model), colouring_(colouring), images_(std::move(images)) {
  std::size_t batches = 0;
  for (const ModelGroup& group : model.groups) {
    firstBatch_.push_back(batches);
    batches += group.batches.size();
  }
  if (colouring != Colouring::kFlags) return;
  const FlagColours colours = ColoursOfFlags(model);
  for (const ModelGroup& group : model.groups) byFlags_.push_back(ColourByTable(group, colours));
}

std::vector<Rgb> FaceColours::OfBatch(std::size_t group, std::size_t batch) const {
  const ModelBatch& drawn = model_.groups[group].batches[batch];
  switch (colouring_) {
    case Colouring::kMaterial:
      return {DistinctColour(drawn.material)};
    case Colouring::kBatch:
      return {DistinctColour(static_cast<std::int64_t>(firstBatch_[group] + batch))};
    case Colouring::kTexture:
      return DiffuseColours(MaterialOf(model_, drawn), drawn);
    case Colouring::kFlags:
      break;
  }
  return byFlags_[group][batch];
}

const TextureLevels* FaceColours::TextureOf(const ModelBatch& batch) const {
  const ModelMaterial* const material = MaterialOf(model_, batch);
  if (colouring_ != Colouring::kTexture || material == nullptr) return nullptr;
  const auto found = images_.find(material->textureName);
  return found == images_.end() ? nullptr : &found->second;
}

}  // namespace mapexport
