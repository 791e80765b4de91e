// Files that the export library writes, kept in memory.
#pragma once

#include <map>
#include <string>

#include <assimp/IOSystem.hpp>

namespace mapexport {

/// Receives what the library writes, by file name. Nothing can be read from it.
class MemoryFiles : public Assimp::IOSystem {
 public:
  bool Exists(const char* file) const override;
  char getOsSeparator() const override { return '/'; }
  Assimp::IOStream* Open(const char* file, const char* mode) override;
  void Close(Assimp::IOStream* stream) override;

  std::map<std::string, std::string>& Files() { return files_; }

 private:
  std::map<std::string, std::string> files_;
};

}  // namespace mapexport
