// The content of a run's input files, as SHA-256.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace mapexport {

struct InputFile {
  std::string path;    ///< to open it
  std::string sha256;  ///< empty when it is no regular file, so that it may be gone once read
};

/// Throws RunError when a regular file can't be read.
std::vector<InputFile> HashInputs(std::span<const std::string> paths);

}  // namespace mapexport
