#include "importer/text/TexturePath.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include <assimp/scene.h>
#include <fmt/format.h>

#include "importer/ReadWithLibrary.h"
#include "importer/rebuild/LibraryValues.h"
#include "importer/text/HostText.h"

namespace mapexport {
namespace {

/// N of "*N"; empty for any other path.
std::optional<unsigned> EmbeddedIndex(std::string_view path) {
  if (!path.starts_with('*')) return std::nullopt;
  unsigned index = 0;
  const auto [end, error] = std::from_chars(path.data() + 1, path.data() + path.size(), index);
  if (error != std::errc{} || end != path.data() + path.size()) return std::nullopt;
  return index;
}

std::string EmbeddedName(const LibraryScene& source, unsigned index) {
  const aiScene& scene = *source.scene;
  const aiTexture* texture =
      scene.mTextures != nullptr && index < scene.mNumTextures ? scene.mTextures[index] : nullptr;
  std::string_view extension;
  if (texture != nullptr) {
    std::string name = source.Text(texture->mFilename);
    if (!name.empty() && !name.starts_with('*')) return name;
    const char* const hint = texture->achFormatHint;
    extension = {hint,
                 static_cast<std::size_t>(std::find(hint, hint + HINTMAXTEXTURELEN, '\0') - hint)};
  }
  return ValidUtf8(fmt::format("embedded{}.{}", index, extension.empty() ? "png" : extension));
}

bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

}  // namespace

std::string NormalisedTexturePath(std::string_view path) {
  std::vector<std::string_view> parts;  // each with the separator that follows it
  while (!path.empty()) {
    const auto separator = std::ranges::find_if(path, IsSeparator);
    const auto end = separator == path.end() ? separator : separator + 1;
    const std::string_view part(path.begin(), end);
    const std::string_view name(path.begin(), separator);
    path = std::string_view(end, path.end());
    const bool hasFolder = !parts.empty() && parts.back().size() > 1;  // not the root, "/"
    if (name == "..") {
      if (hasFolder) parts.pop_back();
    } else if (name != ".") {
      parts.push_back(part);
    }
  }
  std::string result;
  for (const std::string_view part : parts) result += part;
  return result;
}

std::string TexturePath(const LibraryScene& source, const aiString& stored) {
  const std::string text = source.Text(stored);
  if (const std::optional<unsigned> index = EmbeddedIndex(text))
    return NormalisedTexturePath(EmbeddedName(source, *index));
  return NormalisedTexturePath(
      source.format == SourceFormat::kGltf1 ? ValidUtf8(DecodePercents(text)) : text);
}

}  // namespace mapexport
