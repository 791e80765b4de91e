#include "app/textures/TextureFolders.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <tuple>

#include "system/Ascii.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

// As they are preferred: those that engines load as they are, then those that lose nothing.
constexpr std::array<std::string_view, 16> kExtensions{"dds", "ktx2", "ktx", "tga",  "png",  "bmp",
                                                       "tif", "tiff", "jpg", "jpeg", "webp", "gif",
                                                       "psd", "pcx",  "exr", "hdr"};

struct NameParts {
  std::string_view stem;
  std::string_view extension;  ///< without its dot
};

NameParts Split(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return {name, {}};
  return {name.substr(0, dot), name.substr(dot + 1)};
}

/// The position among kExtensions; their number for any other.
std::size_t RankOf(std::string_view extension) {
  const std::string lower = LowerCase(extension);
  return static_cast<std::size_t>(std::ranges::find(kExtensions, lower) - kExtensions.begin());
}

/// The name without what is probably an extension: names of textures can have other dots.
std::string_view StemOf(std::string_view name) {
  const NameParts parts = Split(name);
  return RankOf(parts.extension) < kExtensions.size() ? parts.stem : name;
}

}  // namespace

std::string_view TextureNamePart(std::string_view path) {
  return path.substr(path.find_last_of("/\\") + 1);  // npos + 1 is 0
}

std::optional<TextureFile> TextureFolders::Find(const std::string& folder,
                                                std::string_view texture) {
  const std::string_view name = TextureNamePart(texture);
  const std::string lower = LowerCase(name);
  const auto [begin, end] = NamesIn(folder).equal_range(LowerCase(StemOf(name)));
  const auto order = [&](const std::string& file) {
    return std::tuple(file != name, LowerCase(file) != lower, RankOf(Split(file).extension),
                      std::string_view(file));
  };
  const auto best = std::min_element(
      begin, end, [&](const auto& a, const auto& b) { return order(a.second) < order(b.second); });
  if (best == end) return std::nullopt;
  const std::string path = (fs::path(folder) / best->second).string();
  std::error_code error;
  const std::uint64_t bytes = fs::file_size(path, error);
  if (error) return std::nullopt;
  return TextureFile{path, bytes};
}

const TextureFolders::Names& TextureFolders::NamesIn(const std::string& folder) {
  const auto [place, isNew] = folders_.try_emplace(folder);
  if (!isNew) return place->second;
  std::error_code error;
  const fs::path path = folder.empty() ? "." : folder;
  for (fs::directory_iterator file(path, error), end; !error && file != end;
       file.increment(error)) {
    const std::string name = file->path().filename().string();
    const NameParts parts = Split(name);
    std::error_code unknown;
    if (RankOf(parts.extension) == kExtensions.size() || !file->is_regular_file(unknown)) continue;
    place->second.emplace(LowerCase(parts.stem), name);
  }
  return place->second;
}

}  // namespace mapexport
