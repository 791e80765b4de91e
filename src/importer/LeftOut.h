// Counts what the host's scene can't hold of a foreign one.
#pragma once

#include <cstddef>

#include "system/Remark.h"

namespace mapexport {

/// Counts of what the importer leaves out or has to replace. A mesh that several nodes share counts
/// once.
struct LeftOut {
  std::size_t points = 0;
  std::size_t lines = 0;
  std::size_t objects = 0;         ///< of unknown kinds
  std::size_t curves = 0;          ///< free-form curves and surfaces
  std::size_t polygons = 0;        ///< that could not be triangulated
  std::size_t corners = 0;         ///< cut off polygons that could not be triangulated as a whole
  std::size_t vertices = 0;        ///< with a coordinate that isn't finite
  std::size_t primitives = 0;      ///< parts of meshes without positions
  std::size_t faces = 0;           ///< triangles with such a corner, or one that isn't there
  std::size_t textureCorners = 0;  ///< texture coordinates that aren't finite: replaced by 0
  std::size_t creases = 0;         ///< edges that are creases within smooth surfaces
  std::size_t transforms = 0;      ///< of nodes, not finite: replaced by the parent's
  std::size_t meshes = 0;          ///< that nodes name and the file doesn't have
  std::size_t colours = 0;         ///< colours of vertices
  std::size_t channels = 0;        ///< meshes with more than one set of texture coordinates
  std::size_t attributes = 0;      ///< lists of vertices that aren't as long as the positions
  std::size_t materials = 0;       ///< that no face shows
  std::size_t variants = 0;        ///< other sets of materials that the scene may be shown with
  std::size_t morphs = 0;          ///< shapes that meshes may take on
  std::size_t hidden = 0;          ///< nodes that the scene hides
  std::size_t scenes = 0;          ///< that aren't the file's default one
  std::size_t skins = 0;           ///< whose bones can't be told: they stand as they were bound
  std::size_t bones = 0;
  std::size_t animations = 0;
  std::size_t cameras = 0;
  std::size_t lights = 0;

  /// Adds one warning, "left-out", with all counts in one line when anything is left out.
  void AddSummary(Remarks& remarks) const;
  /// The counts that aren't 0, one remark each: "left-out-points", ...
  Remarks Items() const;
};

}  // namespace mapexport
