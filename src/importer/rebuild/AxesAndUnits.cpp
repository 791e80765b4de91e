#include "importer/rebuild/AxesAndUnits.h"

#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/rebuild/LibraryValues.h"

namespace mapexport {
namespace {

constexpr double kResidue = 1e-6;
constexpr double kCentimetresPerMetre = 100;

/// (x, y, z) -> (x, -z, y).
constexpr WorldPlacement kYUp{.axis = {0, 2, 1}, .sign = {1, -1, 1}, .factor = 1};
/// The same twice: what the library has turned is turned back before the file's own y goes up.
constexpr WorldPlacement kYUpOfTurned{.axis = {0, 1, 2}, .sign = {1, -1, -1}, .factor = 1};

std::optional<int> FindInteger(const aiMetadata* metadata, const char* key) {
  int value = 0;
  if (metadata == nullptr || !metadata->Get(key, value)) return std::nullopt;
  return value;
}

/// The placement of an FBX file's own axes: its coordinate axis becomes x, its front axis -y, its
/// up axis z. Empty when the file names no axes, or not each one once.
std::optional<WorldPlacement> FbxPlacement(const aiMetadata* metadata) {
  constexpr std::array<std::array<const char*, 2>, 3> kKeys{
      {{"CoordAxis", "CoordAxisSign"}, {"FrontAxis", "FrontAxisSign"}, {"UpAxis", "UpAxisSign"}}};
  WorldPlacement placement;
  std::array<bool, 3> used{};
  for (std::size_t k = 0; k < 3; ++k) {
    const std::optional<int> axis = FindInteger(metadata, kKeys[k][0]);
    const std::optional<int> sign = FindInteger(metadata, kKeys[k][1]);
    if (!axis || !sign || *axis < 0 || *axis > 2 || (*sign != 1 && *sign != -1))
      return std::nullopt;
    placement.axis[k] = static_cast<std::size_t>(*axis);
    placement.sign[k] = *sign;
    if (std::exchange(used[placement.axis[k]], true)) return std::nullopt;
  }
  placement.sign[1] = -placement.sign[1];
  return placement;
}

/// The placement that the format or the file asks for.
WorldPlacement OwnPlacement(SourceFormat format, const aiScene* scene, Remarks& remarks) {
  if (format == SourceFormat::kFbx && scene != nullptr) {
    const std::optional<WorldPlacement> told = FbxPlacement(scene->mMetaData);
    if (told) return *told;
    remarks.push_back(
        MakeWarning("axes", "the file's axes are missing or make no sense; it is taken for y-up"));
  }
  return IsZUp(format) ? WorldPlacement{} : kYUp;
}

/// The centimetres of an FBX file's unit, any number; 1 when it names none.
double FbxUnit(const aiMetadata* metadata) {
  double unit = 1;
  float single = 1;  // some versions keep it as float, others as double
  if (metadata == nullptr) return 1;
  if (!metadata->Get("UnitScaleFactor", unit)) {
    if (!metadata->Get("UnitScaleFactor", single)) return 1;
    unit = static_cast<double>(single);
  }
  return unit;
}

/// What lengths are multiplied by unless the options say it: metres become centimetres.
double OwnFactor(SourceFormat format, double fbxUnit) {
  const bool isMetre = std::abs(fbxUnit - kCentimetresPerMetre) <= kResidue * kCentimetresPerMetre;
  return IsInMetres(format) || isMetre ? kCentimetresPerMetre : 1.0;
}

/// One note when a factor or an FBX file's unit isn't 1.
void TellUnits(double factor, bool isAsked, double fbxUnit, Remarks& remarks) {
  const std::string unit = fmt::format("the file's unit is {:.6g} cm", fbxUnit);
  const bool hasUnit = fbxUnit != 1.0;
  if (factor != 1.0) {
    const std::string why = hasUnit    ? "; " + unit
                            : !isAsked ? ": this format's metres become centimetres"
                                       : "";
    remarks.push_back(
        MakeNote("scale", fmt::format("lengths are multiplied by {}{}", factor, why)));
  } else if (hasUnit) {
    remarks.push_back(MakeNote("file-unit", unit + "; its numbers are kept"));
  }
}

using Linear = std::array<std::array<double, 3>, 3>;  // rows of images of the x, y and z axes

/// The column of the only number in `row` that isn't a residue of it; empty when there are several.
std::optional<std::size_t> LoneColumn(const std::array<double, 3>& row) {
  std::size_t largest = 0;
  for (std::size_t c = 1; c < 3; ++c) {
    if (std::abs(row[c]) > std::abs(row[largest])) largest = c;
  }
  for (std::size_t c = 0; c < 3; ++c) {
    if (c != largest && std::abs(row[c]) > kResidue * std::abs(row[largest])) return std::nullopt;
  }
  return row[largest] == 0.0 ? std::nullopt : std::optional(largest);
}

double SnapScale(double scale, double target) {
  return std::abs(std::abs(scale) - target) <= kResidue * target ? std::copysign(target, scale)
                                                                 : scale;
}

void SnapResidue(Linear& linear, double factor) {
  std::array<std::size_t, 3> columns{};
  std::array<bool, 3> used{};
  for (std::size_t r = 0; r < 3; ++r) {
    const std::optional<std::size_t> column = LoneColumn(linear[r]);
    if (!column || std::exchange(used[*column], true)) return;
    columns[r] = *column;
  }
  // A residue of one row may still be no residue beside the scale of its column.
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t other = 0; other < 3; ++other) {
      if (other == r) continue;
      const double scale = std::abs(linear[r][columns[r]]);
      if (std::abs(linear[other][columns[r]]) > kResidue * scale) return;
    }
  }
  for (std::size_t r = 0; r < 3; ++r) {
    const double scale = linear[r][columns[r]];
    linear[r] = {};
    linear[r][columns[r]] = SnapScale(SnapScale(scale, factor), 1.0);
  }
}

Point3 Rounded(const std::array<double, 3>& row) {
  constexpr double kLargest = static_cast<double>(std::numeric_limits<float>::max());
  for (const double number : row) {
    if (std::abs(number) > kLargest) {
      throw std::range_error("the scale takes a node's transform beyond 32-bit floats");
    }
  }
  // The added zero makes +0 of the -0 that a sign change leaves.
  return {static_cast<float>(row[0] + 0.0), static_cast<float>(row[1] + 0.0),
          static_cast<float>(row[2] + 0.0)};
}

}  // namespace

WorldPlacement FindWorldPlacement(SourceFormat format, const aiScene* scene,
                                  const ImportOptions& options, Remarks& remarks) {
  // The library has turned the root so that the file's own z, which was up, became y.
  const bool isTurned = format == SourceFormat::kTurnedToYUp;
  WorldPlacement placement;
  if (options.up == UpAxis::kAuto)
    placement = OwnPlacement(format, scene, remarks);
  else if (options.up == UpAxis::kZ)
    placement = isTurned ? kYUp : WorldPlacement{};
  else
    placement = isTurned ? kYUpOfTurned : kYUp;

  const double fbxUnit =
      scene != nullptr && format == SourceFormat::kFbx ? FbxUnit(scene->mMetaData) : 1.0;
  placement.factor =
      options.scale ? static_cast<double>(*options.scale) : OwnFactor(format, fbxUnit);
  TellUnits(placement.factor, options.scale.has_value(), fbxUnit, remarks);
  return placement;
}

Matrix3 HostTransform(const AffineMatrix& world, const WorldPlacement& placement) {
  Linear linear{};
  std::array<double, 3> translation{};
  for (std::size_t k = 0; k < 3; ++k) {
    const std::array<double, 4>& row = world.rows[placement.axis[k]];
    const double scale = placement.sign[k] * placement.factor;
    for (std::size_t image = 0; image < 3; ++image) linear[image][k] = row[image] * scale;
    translation[k] = row[3] * scale;
  }
  SnapResidue(linear, placement.factor);
  Matrix3 host;
  for (std::size_t r = 0; r < 3; ++r) host.rows[r] = Rounded(linear[r]);
  host.rows[3] = Rounded(translation);
  return host;
}

}  // namespace mapexport
