// The extension by which a file's format is known.
#pragma once

#include <filesystem>
#include <string>

#include "system/Ascii.h"

namespace mapexport {

/// The extension of `path` with its dot, in lower case (ASCII); empty when there is none.
inline std::string FileExtension(const std::string& path) {
  return LowerCase(std::filesystem::path(path).extension().string());
}

}  // namespace mapexport
