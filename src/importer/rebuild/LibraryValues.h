// The import library's values in our types. Only for .cpp files that work on the library's scene.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include <assimp/matrix4x4.h>
#include <assimp/types.h>

#include "importer/rebuild/AffineMatrix.h"

namespace mapexport {

/// The bytes of `text`, even if its length field is wrong.
inline std::string_view BytesOf(const aiString& text) {
  return {text.data, std::min<std::size_t>(text.length, sizeof(text.data) - 1)};
}

/// The upper three rows of `matrix`. The fourth has no meaning in a scene.
inline AffineMatrix AffineFrom(const aiMatrix4x4& matrix) {
  AffineMatrix affine;
  for (unsigned r = 0; r < 3; ++r) {
    for (unsigned c = 0; c < 4; ++c) affine.rows[r][c] = static_cast<double>(matrix[r][c]);
  }
  return affine;
}

}  // namespace mapexport
