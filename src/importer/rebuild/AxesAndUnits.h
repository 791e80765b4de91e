// Places a foreign scene in the host's z-up world.
#pragma once

#include <array>
#include <cstddef>

#include "host/Matrix3.h"
#include "importer/ImportOptions.h"
#include "importer/SourceFormat.h"
#include "importer/rebuild/AffineMatrix.h"
#include "system/Remark.h"

struct aiScene;

namespace mapexport {

/// Turns the library's world into the host's by a signed permutation of the axes, which rounds
/// nothing, and a factor. It applies to the world side of transforms; object space stays as it is.
struct WorldPlacement {
  std::array<std::size_t, 3> axis{0, 1, 2};  ///< the library's axis behind the host's x, y, z
  std::array<double, 3> sign{1, 1, 1};       ///< 1 or -1 each
  double factor = 1;                         ///< host units per unit of the library's scene
};

/// The placement that the options ask for, else that of the format or the file. `scene` is the
/// library's, with a root; null if the library didn't read the file. Adds one note about a factor
/// or an FBX file's unit other than 1, and a warning about its axes when they are contradictory (it
/// then counts as y-up).
WorldPlacement FindWorldPlacement(SourceFormat format, const aiScene* scene,
                                  const ImportOptions& options, Remarks& remarks);

/// The host's object-to-world transform for the library's. A 3x3 part within 1e-6 of one that only
/// swaps, mirrors and scales axes is replaced by that one, and a scale within 1e-6 of 1 (or of the
/// factor) by 1 (or the factor): the library's rotations by right angles have rounding errors that
/// would tilt every floor a little. Throws std::range_error when the factor makes a number too
/// large for 32-bit floats.
Matrix3 HostTransform(const AffineMatrix& world, const WorldPlacement& placement);

}  // namespace mapexport
