// The fields of materials that differ.
#pragma once

#include <string>

#include "compare/SameBits.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// Calls `visit(name, of a, of b)` for each field that differs in its bits, in the order and with
/// the names of docs/inspect-json.md; the header does not count.
template <class Visit>
void VisitChangedFields(const ModelMaterial& a, const ModelMaterial& b, const Visit& visit) {
  const auto compare = [&](const char* name, auto ModelMaterial::*field) {
    if (!SameBits(a.*field, b.*field)) visit(name, a.*field, b.*field);
  };
  compare("textureName", &ModelMaterial::textureName);
  compare("scalar1", &ModelMaterial::scalar1);
  compare("scalar2", &ModelMaterial::scalar2);
  compare("scalar3", &ModelMaterial::scalar3);
  compare("modeValue", &ModelMaterial::modeValue);
  compare("ambient", &ModelMaterial::ambient);
  compare("diffuse", &ModelMaterial::diffuse);
  compare("specular", &ModelMaterial::specular);
  compare("twoSided", &ModelMaterial::twoSided);
}

}  // namespace mapexport
