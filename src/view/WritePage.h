// The HTML page that shows a model.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "modelreader/ModelFile.h"
#include "view/ModelBlock.h"

namespace mapexport {

/// Whether this program can make pages: it was built with Node.js.
bool CanWritePage();

/// Models whose lists take more than this in the page are too large for browsers, which hold a text
/// of at most half a gigabyte.
inline constexpr std::uint64_t kMaxModelBlockBytes = std::uint64_t{256} << 20;

/// Writes the page of `model`: one document that needs nothing beside it. All that comes from the
/// model, its names included, stands in it as base64, so that no name can be taken for markup.
/// Requires CanWritePage() and a model of at most kMaxModelBlockBytes by ModelBlockBytes.
void WritePage(const ModelFile& model, const ViewInfo& info, std::ostream& out);

}  // namespace mapexport
