// Materials of the export library out of those of a model file.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <assimp/material.h>

#include "convert/LegalValues.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// `text` as UTF-8 that the library can hold: what is no UTF-8 becomes U+FFFD, control characters
/// become blanks, and what goes beyond 1,000 bytes is cut.
std::string LibraryText(std::string_view text);

/// The material by its name: its diffuse colour and opacity as the surface's colour, no metal,
/// rough, two-sided as it is. The texture is left out: a reference to a picture that is not there
/// would make the file invalid.
std::unique_ptr<aiMaterial> TargetMaterial(const ModelMaterial& material, Changes& changes);

/// A white material by the name that readers know as "no material".
std::unique_ptr<aiMaterial> NoMaterial();

/// The colour that a surface of the material has, without its opacity.
aiColor4D BaseColour(const ModelMaterial& material, Changes& changes);

}  // namespace mapexport
