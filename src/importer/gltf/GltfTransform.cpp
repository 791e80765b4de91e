// Transforms as glTF stores them.
#include "importer/gltf/GltfTransform.h"

#include <cmath>
#include <cstddef>

namespace mapexport {

AffineMatrix AffineFromColumns(const std::array<float, 16>& columns) {
  AffineMatrix matrix;
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      matrix.rows[r][c] = static_cast<double>(columns[4 * c + r]);
    }
  }
  return matrix;
}

AffineMatrix AffineFromParts(const std::array<float, 3>& translation,
                             const std::array<float, 4>& rotation,
                             const std::array<float, 3>& scale) {
  std::array<double, 4> q{};
  double square = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    q[k] = static_cast<double>(rotation[k]);
    square += q[k] * q[k];
  }
  // The length is 1 but for rounding, which must not scale the node.
  if (square > 0) {
    for (double& part : q) part /= std::sqrt(square);
  } else {
    q = {0, 0, 0, 1};
  }
  const auto [x, y, z, w] = q;
  AffineMatrix matrix;
  matrix.rows = {{{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w), 0},
                  {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w), 0},
                  {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y), 0}}};
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 3; ++c) matrix.rows[r][c] *= static_cast<double>(scale[c]);
    matrix.rows[r][3] = static_cast<double>(translation[r]);
  }
  return matrix;
}

}  // namespace mapexport
