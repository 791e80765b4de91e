#include "convert/TargetSpace.h"

namespace mapexport {

namespace {

ModelPoint InHostWorld(const ModelPoint& p, std::int32_t coordinates) {
  switch (coordinates) {
    case 0:  // (y, z, -x) in the file
      return {-p.z, p.x, p.y};
    case 1:  // (-y, x, z)
      return {p.y, -p.x, p.z};
    case 3:  // (-x, y, z)
      return {-p.x, p.y, p.z};
    default:
      return p;
  }
}

bool Mirrors(std::int32_t coordinates) {
  return coordinates == 0 || coordinates == 3;
}

}  // namespace

aiVector3D TargetSpace::Turned(const ModelPoint& point) const {
  const ModelPoint host = InHostWorld(point, exported_.coordinates);
  // + 0 turns the negative zeros that negation makes into zeros.
  return yUp_ ? aiVector3D(host.x + 0.0f, host.z + 0.0f, -host.y + 0.0f)
              : aiVector3D(host.x + 0.0f, host.y + 0.0f, host.z + 0.0f);
}

aiVector3D TargetSpace::Position(const ModelPoint& point) const {
  const aiVector3D turned = Turned(point);
  const auto scaled = [this](float value) {
    return static_cast<float>(static_cast<double>(value) / hostUnits_);
  };
  return {scaled(turned.x), scaled(turned.y), scaled(turned.z)};
}

aiVector3D TargetSpace::Normal(const ModelPoint& normal) const {
  return Mirrors(exported_.coordinates) ? Turned(normal)
                                        : Turned({-normal.x, -normal.y, -normal.z});
}

aiVector2D TargetSpace::Texture(float u, float v) const {
  const std::int32_t mode = exported_.textureCoordinates;
  return {mode == 1 || mode == 2 ? -u : u, mode == 0 || mode == 2 ? -v : v};
}

}  // namespace mapexport
