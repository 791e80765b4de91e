#include "picture/PageSpace.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "system/IsFinite.h"

namespace mapexport {

/// For each axis of the page, the file's axis and its sign. The exporter reverses the corners of
/// every face; when the system does not mirror, normals point into the solid, and normalSign is -1.
struct PageSpace::System {
  std::array<std::size_t, 3> axes;
  std::array<double, 3> signs;
  double normalSign;
};

const PageSpace::System& PageSpace::SystemOf(int index) {
  static constexpr std::array<System, 4> kSystems{{{{2, 1, 0}, {-1, 1, -1}, 1},
                                                   {{1, 2, 0}, {1, 1, 1}, -1},
                                                   {{0, 2, 1}, {1, 1, -1}, -1},
                                                   {{0, 2, 1}, {-1, 1, -1}, 1}}};
  return kSystems.at(static_cast<std::size_t>(index));
}

namespace {

constexpr double kFarthest = 1e6;  ///< points further away are not shown
constexpr std::size_t kSampled = 20000;
constexpr double kOutlying = 200;  ///< times as large as the main part
constexpr double kLowShare = 0.02;
constexpr double kHighShare = 0.98;
constexpr double kPageSize = 100;

std::array<double, 3> AxesOf(const ModelPoint& point) {
  return {double{point.x}, double{point.y}, double{point.z}};
}

struct Box {
  std::array<double, 3> least;
  std::array<double, 3> most;

  double Extent() const {
    double extent = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      extent = std::max(extent, most[axis] - least[axis]);
    }
    return extent;
  }
};

/// The boxes around all finite points and around most of them.
class BoxFinder {
 public:
  explicit BoxFinder(const ModelFile& model) {
    std::size_t total = 0;
    for (const ModelGroup& group : model.groups) {
      total += group.vertices.size() + group.collisionPoints.size();
    }
    step_ = std::max<std::size_t>(1, total / kSampled);
    for (const ModelGroup& group : model.groups) {
      Add(group.vertices);
      Add(group.collisionPoints);
    }
  }

  bool IsEmpty() const { return !(all_.least[0] <= all_.most[0]); }
  const Box& All() const { return all_; }
  Box Main() {
    Box box = all_;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      if (samples_[axis].empty()) continue;
      box.least[axis] = Part(samples_[axis], kLowShare);
      box.most[axis] = Part(samples_[axis], kHighShare);
    }
    return box;
  }

 private:
  void Add(const std::vector<ModelPoint>& points) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      if (!IsFinite(points[i])) continue;
      const std::array<double, 3> at = AxesOf(points[i]);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        all_.least[axis] = std::min(all_.least[axis], at[axis]);
        all_.most[axis] = std::max(all_.most[axis], at[axis]);
        if (i % step_ == 0) samples_[axis].push_back(at[axis]);
      }
    }
  }
  static double Part(std::vector<double>& values, double share) {
    const double place = share * static_cast<double>(values.size() - 1);
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(std::floor(place + 0.5));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
  }

  static constexpr double kInfinity = std::numeric_limits<double>::infinity();
  Box all_{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};
  std::array<std::vector<double>, 3> samples_;
  std::size_t step_ = 1;
};

}  // namespace

PageSpace::PageSpace(const ModelFile& model, int coordinateSystem)
    : system_(SystemOf(coordinateSystem)) {
  BoxFinder finder(model);
  if (finder.IsEmpty()) return;
  // When a few points are so far away that the rest would be a dot, the rest counts.
  const Box main = finder.Main();
  const bool outliers = main.Extent() > 0 && finder.All().Extent() > kOutlying * main.Extent();
  const Box& box = outliers ? main : finder.All();
  for (std::size_t axis = 0; axis < 3; ++axis) {
    extents_[axis] = box.most[axis] - box.least[axis];
    centre_[axis] = box.least[axis] / 2 + box.most[axis] / 2;
  }
  if (box.Extent() > 0) scale_ = kPageSize / box.Extent();
}

std::optional<Vector> PageSpace::Place(const ModelPoint& point) const {
  return Place(AxesOf(point));
}

std::optional<Vector> PageSpace::Place(const std::array<double, 3>& file) const {
  std::array<double, 3> at{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const std::size_t from = system_.axes[axis];
    at[axis] = system_.signs[axis] * (file[from] - centre_[from]) * scale_;
    if (!(std::abs(at[axis]) <= kFarthest)) return std::nullopt;  // NaN, too
  }
  return Vector{at[0], at[1], at[2]};
}

std::array<double, 3> PageSpace::FileSize() const {
  const auto& [x, y, z] = system_.axes;
  return {extents_[x], extents_[y], extents_[z]};
}

Vector PageSpace::Outward(const ModelPoint& normal) const {
  const std::array<double, 3> file = AxesOf(normal);
  const auto axis = [&](std::size_t i) {
    return system_.normalSign * system_.signs[i] * file[system_.axes[i]];
  };
  return Normalised({axis(0), axis(1), axis(2)});
}

}  // namespace mapexport
