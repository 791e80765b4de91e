#include "app/export/InputFiles.h"

#include <filesystem>
#include <system_error>

#include "output/Sha256.h"

namespace mapexport {

std::vector<InputFile> HashInputs(std::span<const std::string> paths) {
  std::vector<InputFile> files;
  for (const std::string& path : paths) {
    // A missing file is an error, not a pipe.
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    const bool isOther = type != std::filesystem::file_type::regular && !error;
    files.push_back({path, isOther ? std::string() : Sha256OfFile(path)});
  }
  return files;
}

}  // namespace mapexport
