// Looks for the files of textures as engines do.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

struct TextureFile {
  std::string path;
  std::uint64_t bytes = 0;
};

/// The part of a texture's path behind its last separator, "/" or "\\".
std::string_view TextureNamePart(std::string_view path);

/// Folders with textures. Each is read once, when it is first needed; no file is opened.
class TextureFolders {
 public:
  /// The regular file in `folder` that has the name of `texture`: without its folder, in whatever
  /// case (ASCII), with any extension of a picture. Several such files count in this order: the one
  /// with the very name, the one that differs by case, the others in the order of kExtensions in
  /// the .cpp. Nothing in a folder that can't be read.
  std::optional<TextureFile> Find(const std::string& folder, std::string_view texture);

 private:
  /// Names of pictures by their lower-case names without extension.
  using Names = std::multimap<std::string, std::string, std::less<>>;
  const Names& NamesIn(const std::string& folder);

  std::map<std::string, Names> folders_;
};

}  // namespace mapexport
