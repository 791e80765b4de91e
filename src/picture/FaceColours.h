// The colours of faces, those of the page of `view` (viewer/src/colours.js).
#pragma once

#include <vector>

#include "modelreader/ModelFile.h"
#include "picture/Picture.h"

namespace mapexport {

enum class Colouring { kMaterial, kBatch, kFlags };

/// The colour of thing `index` among many: hues a golden angle apart, so that neighbours differ;
/// grey below 0.
Rgb DistinctColour(std::int64_t index);

/// Finds the colours of a model's faces.
class FaceColours {
 public:
  FaceColours(const ModelFile& model, Colouring colouring);

  /// The colours of the faces of a batch: one for all of them, or one for each.
  std::vector<Rgb> OfBatch(std::size_t group, std::size_t batch) const;

 private:
  const ModelFile& model_;
  Colouring colouring_;
  std::vector<std::size_t> firstBatch_;                 ///< of each group, in the whole model
  std::vector<std::vector<std::vector<Rgb>>> byFlags_;  ///< by group, batch and face
};

}  // namespace mapexport
