// Converts a model in a process of its own.
#pragma once

#include <functional>

#include "convert/ConvertModel.h"

namespace mapexport {

/// What `convert` gives, in a child process: the export library crashes where it lacks memory, and
/// that ends only the child. There must be no other thread. Throws ConvertError and bad_alloc.
ConvertedModel ConvertApart(const std::function<ConvertedModel()>& convert);

}  // namespace mapexport
