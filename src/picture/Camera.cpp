#include "picture/Camera.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace mapexport {
namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr double kHalfView = 25 * kDegree;  ///< of the page's camera, upwards
constexpr double kSteepest = std::numbers::pi / 2 - 0.01;
constexpr double kMostTurns = 1e6;  ///< in degrees
// What is in front of the page's camera: at least this far away, and this share of the distance.
constexpr double kLeastNearest = 0.01;
constexpr double kMostNearest = 0.05;
constexpr double kNearestShare = 0.1;

/// X, Y, Z, YAW, PITCH, DISTANCE
using LinkNumbers = std::array<double, 6>;

std::optional<LinkNumbers> NumbersOf(std::string_view text) {
  LinkNumbers numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, numbers[i]);
    if (error != std::errc() || !std::isfinite(numbers[i])) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(behind - text.data()));
    const bool isLast = i + 1 == numbers.size();
    if (isLast ? !text.empty() : !text.starts_with(',')) return std::nullopt;
    if (!isLast) text.remove_prefix(1);
  }
  return numbers;
}

}  // namespace

std::optional<std::string_view> LinkPart(std::string_view link, std::string_view name) {
  link.remove_prefix(std::min(link.size(), link.find('#') + 1));
  while (!link.empty()) {
    std::string_view part = link.substr(0, link.find('&'));
    link.remove_prefix(std::min(link.size(), part.size() + 1));
    if (!part.starts_with(name) || !part.substr(name.size()).starts_with('=')) continue;
    return part.substr(name.size() + 1);
  }
  return std::nullopt;
}

std::optional<Camera> CameraOfLink(std::string_view link, const PageSpace& space) {
  const auto text = LinkPart(link, "camera");
  const auto numbers = text ? NumbersOf(*text) : std::nullopt;
  if (!numbers) return std::nullopt;
  const auto [x, y, z, yawDegrees, pitchDegrees, distance] = *numbers;
  const std::optional<Vector> eye = space.Place(std::array{x, y, z});
  if (!eye || std::abs(yawDegrees) > kMostTurns) return std::nullopt;
  const double yaw = yawDegrees * kDegree;
  const double pitch = std::clamp(pitchDegrees * kDegree, -kSteepest, kSteepest);
  Camera camera;
  camera.hasPerspective = true;
  camera.eye = *eye;
  camera.right = {std::cos(yaw), 0, -std::sin(yaw)};
  camera.up = {std::sin(yaw) * std::sin(pitch), std::cos(pitch), std::cos(yaw) * std::sin(pitch)};
  camera.back = {std::sin(yaw) * std::cos(pitch), -std::sin(pitch),
                 std::cos(yaw) * std::cos(pitch)};
  camera.tangent = std::tan(kHalfView);
  const double near =
      std::clamp(space.Length(distance) * kNearestShare, kLeastNearest, kMostNearest);
  // From far away, the level begins far away.
  constexpr double kLevelReach = 1.8 * kReach;
  const double away = std::sqrt(Dot(*eye, *eye)) - kLevelReach;
  camera.nearest = std::max(near, away);
  return camera;
}

}  // namespace mapexport
