// What is done to every foreign scene at last, whatever it was read from.
#pragma once

namespace mapexport {

struct ImportedScene;
struct LeftOut;

/// Replaces control characters in names by blanks. Drops the materials that no node shows and
/// counts them. Remarks on such names, on words that were probably meant to be keywords, on
/// different materials with one name, of which the exporters keep the first, on a scene without
/// triangles, and on all that is left out. Cost: linear in the scene.
void FinishScene(ImportedScene& imported, LeftOut& leftOut);

}  // namespace mapexport
