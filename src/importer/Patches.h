// Changes scene files before the import library reads them, where it would misread the originals.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

/// `text`, an AC3D file, with only those texture lines that name an object's own picture. In one
/// dialect an object has further ones, for skid marks, shadows and the like; the library takes the
/// last one, and reads a name without quotes as "ERROR". Empty when there are no others. Cost:
/// linear.
std::optional<std::string> PatchAc3d(std::string_view text);

/// `text`, a Collada document, changed so that the library gives each triangle the document's
/// material (an unbound symbol counts as a material's id). The library makes three mistakes: it
/// gives some material of the document to triangles without one; it ignores an instance's binding
/// of a symbol that is also the id of a material; and it mixes up the triangles of a mesh whose
/// instances share only some materials. In the changed text, triangles without a material have one
/// with the library's default name. A two-sided mark in the extras of an effect is repeated where
/// the library looks for it. A skin's bind shape matrix, which the library leaves out, becomes a
/// transform of a node. Blanks before the first number of a list are dropped. Empty when nothing
/// needs a change, and when the text is no sound XML.
std::optional<std::string> PatchCollada(std::string_view text);

/// `text`, an X3D document, with a copy in place of each group that is used again (USE): the
/// library loses its place in the tree there, and the rest of the scene. Throws std::length_error
/// when the copies would take too much memory. Empty when nothing is used again, and when the text
/// is no sound XML.
std::optional<std::string> PatchX3d(std::string_view text);

struct PatchedAse {
  std::string text;
  std::size_t shapes = 0;  ///< objects of curves that were cut out
  std::size_t others = 0;  ///< blocks of unknown kinds that were cut out
};

/// `text`, an ASE file, without curve objects and blocks of unknown kinds: the library stops
/// reading at the first of them. Empty when there are none. Cost: linear.
std::optional<PatchedAse> PatchAse(std::string_view text);

}  // namespace mapexport
