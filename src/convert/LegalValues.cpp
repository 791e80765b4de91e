#include "convert/LegalValues.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace mapexport {

namespace {

float LegalPart(float part) {
  return std::isnan(part) ? 0 : std::clamp(part, 0.0f, 1.0f);
}

std::optional<aiVector3D> Normalised(const aiVector3D& vector) {
  const double length = std::hypot(vector.x, vector.y, vector.z);
  if (!std::isfinite(length) || length == 0) return std::nullopt;
  // Normals from the exporter have length 1 within rounding, and stay as they are.
  constexpr double kRounding = 1e-5;
  if (std::abs(length - 1) < kRounding) return vector;
  return aiVector3D(static_cast<float>(vector.x / length), static_cast<float>(vector.y / length),
                    static_cast<float>(vector.z / length));
}

}  // namespace

aiColor4D LegalColour(const aiColor4D& colour, Changes& changes) {
  const aiColor4D legal(LegalPart(colour.r), LegalPart(colour.g), LegalPart(colour.b),
                        LegalPart(colour.a));
  const bool same =
      legal.r == colour.r && legal.g == colour.g && legal.b == colour.b && legal.a == colour.a;
  if (!same) ++changes.colours;
  return legal;
}

aiVector3D LegalNormal(const aiVector3D& normal, const aiVector3D& ofFace, bool yUp,
                       Changes& changes) {
  if (const auto unit = Normalised(normal)) return *unit;
  ++changes.normals;
  return Normalised(ofFace).value_or(yUp ? aiVector3D(0, 1, 0) : aiVector3D(0, 0, 1));
}

aiVector2D LegalTexture(const aiVector2D& texture, Changes& changes) {
  if (std::isfinite(texture.x) && std::isfinite(texture.y)) return texture;
  ++changes.textureCoordinates;
  return {0, 0};
}

}  // namespace mapexport
