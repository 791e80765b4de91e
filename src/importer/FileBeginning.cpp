// The first look at a file, before any reader gets it.
#include "importer/FileBeginning.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <fmt/format.h>

#include "scene/SceneError.h"

namespace mapexport {

namespace fs = std::filesystem;

std::string FileBeginning(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (status.type() == fs::file_type::not_found) RefuseFile(path, "no such file");
  if (error) RefuseFile(path, error.message());
  if (status.type() == fs::file_type::directory) RefuseFile(path, "is a folder, not a file");
  if (status.type() != fs::file_type::regular) RefuseFile(path, "is not a regular file");

  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file)
    RefuseFile(path, fmt::format("can't be opened: {}", std::generic_category().message(errno)));
  std::array<char, 32> bytes{};
  file.read(bytes.data(), bytes.size());
  if (file.bad()) RefuseFile(path, "can't be read");
  if (file.gcount() == 0) RefuseFile(path, "the file is empty");
  return {bytes.data(), static_cast<std::size_t>(file.gcount())};
}

void RefuseFile(const std::string& path, std::string_view reason) {
  throw SceneError(fmt::format("{}: {}", path, reason));
}

void RefuseUtf16(const std::string& path) {
  RefuseFile(path, "is UTF-16 text, which is not understood; save it as UTF-8");
}

}  // namespace mapexport
