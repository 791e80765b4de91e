// Writes the HTML page that shows a model.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "modelreader/ModelFile.h"
#include "view/ModelBlock.h"

namespace mapexport {

/// Whether this program can write pages, that is, was built with Node.js.
bool CanWritePage();

/// A model whose lists take more than this is too large for browsers, which limit a text to half a
/// gigabyte.
inline constexpr std::uint64_t kMaxModelBlockBytes = std::uint64_t{256} << 20;

/// Writes the page of `model`: one document that needs no other file. Everything from the model,
/// its names included, is base64 in it, so no name can be taken for markup. Requires CanWritePage()
/// and a model of at most kMaxModelBlockBytes by ModelBlockBytes.
void WritePage(const ModelFile& model, const ViewInfo& info, std::ostream& out);

}  // namespace mapexport
