// A folder of a test's own, and files in it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace mapexport {

namespace fs = std::filesystem;

inline std::string Content(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void Write(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

inline std::vector<std::string> Names(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  return names;
}

/// Has no dot in its path; goes with all that is in it.
class TempFolder {
 public:
  TempFolder() : path_((fs::temp_directory_path() / "mapexport-test-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder for the test");
  }
  ~TempFolder() { fs::remove_all(path_); }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  fs::path Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace mapexport
