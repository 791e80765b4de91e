// Makes materials of the export library from those of a model file.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <assimp/material.h>

#include "convert/LegalValues.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// `text` as UTF-8 that the library can hold: other bytes become U+FFFD, control characters become
/// blanks, and the text is cut at 1,000 bytes.
std::string LibraryText(std::string_view text);

/// The material with its name, diffuse colour and opacity; not metallic, rough, two-sided as in the
/// model. The texture is left out: a reference to a missing picture would make the file invalid.
std::unique_ptr<aiMaterial> TargetMaterial(const ModelMaterial& material, Changes& changes);

/// A white material with the name that readers take for "no material".
std::unique_ptr<aiMaterial> NoMaterial();

/// The base colour of the material's surface, without its opacity.
aiColor4D BaseColour(const ModelMaterial& material, Changes& changes);

}  // namespace mapexport
