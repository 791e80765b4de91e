// Copies the textures that an export found.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "app/Messages.h"
#include "app/textures/FindTextures.h"
#include "output/TakenFiles.h"

namespace mapexport {

/// A file to copy.
struct TextureCopy {
  std::string from;
  std::string to;
};

/// The copies of all found textures to `folder`, under their own names. A file that is there
/// already with the same content needs none. One that differs, one of `taken`, or a second texture
/// of that name (in whatever case) with other content, gets a warning and no copy.
std::vector<TextureCopy> PlanTextureCopies(const std::string& folder,
                                           std::span<const TextureUse> textures,
                                           const TakenFiles& taken, Messages& messages);

/// Puts each copy in place when it is complete, unless a file has appeared there since: one that
/// differs gets a warning. Throws RunError; those before it stay.
void CopyTextures(std::span<const TextureCopy> copies, Messages& messages);

}  // namespace mapexport
