// The colours of faces, those of the page of `view` (viewer/src/colours.js).
#pragma once

#include <vector>

#include "modelreader/ModelFile.h"
#include "picture/Picture.h"
#include "picture/TextureSampler.h"

namespace mapexport {

/// kTexture: by the material's diffuse colour, without one by the corners, where no texture has
/// another.
enum class Colouring { kMaterial, kBatch, kFlags, kTexture };

/// The colour of thing `index` among many: hues a golden angle apart, so that neighbours differ;
/// grey below 0.
Rgb DistinctColour(std::int64_t index);

/// Finds the colours of a model's faces.
class FaceColours {
 public:
  /// `images` are for kTexture.
  FaceColours(const ModelFile& model, Colouring colouring, TextureImages images = {});

  /// The colours of the faces of a batch: one for all of them, or one for each.
  std::vector<Rgb> OfBatch(std::size_t group, std::size_t batch) const;
  /// The texture of a batch; null without one.
  const TextureLevels* TextureOf(const ModelBatch& batch) const;

 private:
  const ModelFile& model_;
  Colouring colouring_;
  TextureImages images_;
  std::vector<std::size_t> firstBatch_;                 ///< of each group, in the whole model
  std::vector<std::vector<std::vector<Rgb>>> byFlags_;  ///< by group, batch and face
};

}  // namespace mapexport
