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
/// as `export --textures` does, and shrunk to kTextureEdge; to a half, a quarter and so on when all
/// would have more than kMaxImagePixels. Each file is decoded once, in a confined child. Textures
/// that are not found and files that can't be read are missing, with a warning. The files are added
/// to `inputs`. `path` is the model's. Throws RunError when a folder is none or can't be read.
std::map<std::string, Image> ReadTextures(const ModelFile& model, const std::string& path,
                                          std::span<const std::string> folders, TakenFiles& inputs,
                                          Messages& messages);

/// The images as PNG files, shrunk further, all to the same edge, until a page has room for them.
std::map<std::string, std::string> PageTextures(std::map<std::string, Image>&& images);

/// The images with halves of them, for a picture.
TextureImages PictureTextures(std::map<std::string, Image>&& images);

}  // namespace mapexport
