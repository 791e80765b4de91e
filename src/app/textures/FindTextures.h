// Looks for the textures of an export.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/Messages.h"
#include "app/export/ExportArguments.h"
#include "app/textures/TextureFolders.h"
#include "modelreader/ModelTextures.h"
#include "scene/Scene.h"

namespace mapexport {

/// A texture of the output. Without --textures and --copy-textures no file is looked for.
struct TextureUse {
  ModelTexture texture;
  bool wanted = false;              ///< whether a file was looked for
  std::optional<TextureFile> file;  ///< empty when there is none
};

/// What a scene says of its textures.
struct SceneTextures {
  std::vector<std::string> pictures;  ///< the paths that its materials name
  /// By a material's name the names of the nodes with a face of it.
  std::map<std::string, std::vector<std::string>> nodesOf;
};

/// Empty unless textures are looked for: the cost is that of visiting all faces of all nodes.
SceneTextures TexturesOf(const Scene& scene, const ExportArguments& arguments);

/// Throws RunError when one of `folders`, those of --textures, is none or can't be read.
void RequireTextureFolders(std::span<const std::string> folders);

/// The file of a texture in the first of `folders` that has one.
std::optional<TextureFile> FindInFolders(TextureFolders& files,
                                         std::span<const std::string> folders,
                                         std::string_view texture);

/// The warning that a texture is not found `where`, such as "in maps, more/maps".
Remark MissingTexture(const ModelTexture& texture, std::string_view where);

/// Looks for each texture in the folders of --textures in their order, or, without that option,
/// where one of the scene's pictures has that name, and beside the scene. Warns of each that is not
/// found, naming the nodes, and of each that stands for several pictures of the scene.
std::vector<TextureUse> FindTextures(std::vector<ModelTexture> textures, const SceneTextures& scene,
                                     const ExportArguments& arguments, Messages& messages);

}  // namespace mapexport
