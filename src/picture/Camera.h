// Where a picture is seen from.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "picture/PageSpace.h"
#include "picture/Vector.h"

namespace mapexport {

/// Axes of the view, at right angles and of length 1: to the right, up, and back to the viewer.
/// Without a perspective the picture is made to fit the level, and the eye is at no place.
struct Camera {
  Vector right{1, 0, 0};
  Vector up{0, 1, 0};
  Vector back{0, 0, 1};
  bool hasPerspective = false;
  Vector eye{};        ///< with perspective
  double tangent = 0;  ///< half of the picture's height at distance 1, with perspective
  double nearest = 0;  ///< distance of what is just in front of the eye, with perspective
};

/// The value of a part of a page's address, "NAME=VALUE" behind its "#"; nothing without it.
std::optional<std::string_view> LinkPart(std::string_view link, std::string_view name);

/// The camera that the part of a page's address behind "#" has: "camera=X,Y,Z,YAW,PITCH,DISTANCE",
/// in the file's units and degrees, among other parts. Nothing when it has none, or no such place.
/// Its directions are rounded as the mathematical library does.
std::optional<Camera> CameraOfLink(std::string_view link, const PageSpace& space);

enum class NamedView { kIso, kTop, kFront, kSide };

inline constexpr double kRoot12 = 0.70710678118654752;  // the square root of 1/2, of 1/3, of 1/6
inline constexpr double kRoot13 = 0.57735026918962576;
inline constexpr double kRoot16 = 0.40824829046386302;

/// By NamedView, without perspective.
inline constexpr std::array<Camera, 4> kNamedViews{{
    {.right = {kRoot12, 0, -kRoot12},
     .up = {-kRoot16, 2 * kRoot16, -kRoot16},
     .back = {kRoot13, kRoot13, kRoot13}},
    {.right = {1, 0, 0}, .up = {0, 0, -1}, .back = {0, 1, 0}},
    {.right = {1, 0, 0}, .up = {0, 1, 0}, .back = {0, 0, 1}},
    {.right = {0, 0, -1}, .up = {0, 1, 0}, .back = {1, 0, 0}},
}};

}  // namespace mapexport
