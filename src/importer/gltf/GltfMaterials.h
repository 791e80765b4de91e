// glTF materials as the host's Standard materials.
#pragma once

#include <string>
#include <vector>

#include "importer/gltf/GltfBudget.h"
#include "importer/gltf/GltfDocument.h"
#include "scene/Scene.h"

namespace mapexport {

/// The material's texture that becomes the host's diffuse map: the one of its base colour, or of
/// the emission of a material that only emits. Null when there is none.
const GltfTextureUse* ShownTexture(const GltfMaterial& material);

/// The host's materials, one for each of `document`, whose indices are in range. One without a name
/// is called "Material N" (N from 1), since equal names mean one material to the host's exporters.
/// The colour is the base colour, or where that is black the emission, as other formats have it.
/// Materials without the specular-glossiness extension are as shiny as they are smooth. Their texts
/// are taken from `budget`.
std::vector<SceneMaterial> MakeGltfMaterials(const GltfDocument& document, GltfBudget& budget);

}  // namespace mapexport
