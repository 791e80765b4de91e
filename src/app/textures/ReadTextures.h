// Reads the images of a model's textures.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

#include "app/Messages.h"
#include "images/Image.h"
#include "modelreader/ModelFile.h"
#include "output/TakenFiles.h"
#include "picture/TextureSampler.h"

namespace mapexport {

/// The most pixels on an axis of what ReadTextures returns.
inline constexpr std::uint32_t kTextureEdge = 512;

/// By the names of the textures of `model` their images from `folders`, where they are looked for
/// as `export --textures` does, and shrunk to kTextureEdge. Each is decoded in a confined child.
/// Those that are not found or can't be read are missing, with a warning. The files are added to
/// `inputs`. `path` is the model's. Throws RunError when a folder is none.
std::map<std::string, Image> ReadTextures(const ModelFile& model, const std::string& path,
                                          std::span<const std::string> folders, TakenFiles& inputs,
                                          Messages& messages);

/// The images as PNG files, in the order of the model's textures as long as they fit into a page;
/// each that does not is a warning.
std::map<std::string, std::string> PageTextures(const ModelFile& model, const std::string& path,
                                                const std::map<std::string, Image>& images,
                                                Messages& messages);

/// The images with halves of them, for a picture.
TextureImages PictureTextures(const std::map<std::string, Image>& images);

}  // namespace mapexport
