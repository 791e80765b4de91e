// The extension by which a file's format is known.
#pragma once

#include <filesystem>
#include <string>

namespace mapexport {

/// The extension of `path` with its dot, in lower case (ASCII); empty when there is none.
inline std::string FileExtension(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return extension;
}

}  // namespace mapexport
