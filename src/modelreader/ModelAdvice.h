// What is unusual in a model, and what a person can do about it.
#pragma once

#include <string>
#include <vector>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// One printable sentence per finding; none for ordinary models. The time is linear in the size of
/// the model.
std::vector<std::string> Advise(const ModelFile& model);

}  // namespace mapexport
