// The import library's transforms in double precision.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace mapexport {

/// Three rows of four numbers for column vectors; column 3 is the translation, as in the library.
/// Double precision, so that a chain of transforms is rounded to floats once, at its end.
struct AffineMatrix {
  std::array<std::array<double, 4>, 3> rows{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};

  friend bool operator==(const AffineMatrix&, const AffineMatrix&) = default;
};

/// The transform that applies `inner` first.
inline AffineMatrix operator*(const AffineMatrix& outer, const AffineMatrix& inner) {
  AffineMatrix product;
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 4; ++c) {
      double sum = c == 3 ? outer.rows[r][3] : 0.0;
      for (std::size_t k = 0; k < 3; ++k) sum += outer.rows[r][k] * inner.rows[k][c];
      product.rows[r][c] = sum;
    }
  }
  return product;
}

/// Whether it turns left hands into right ones.
inline bool IsMirrored(const AffineMatrix& matrix) {
  const auto& m = matrix.rows;
  return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
             m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
             m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]) <
         0;
}

/// Whether all its numbers are finite and leave room for what is done with them.
inline bool IsUsable(const AffineMatrix& matrix) {
  constexpr double kLargestNumber = 1e30;
  for (const std::array<double, 4>& row : matrix.rows) {
    for (const double number : row) {
      if (!(std::abs(number) <= kLargestNumber)) return false;  // a NaN, too
    }
  }
  return true;
}

}  // namespace mapexport
