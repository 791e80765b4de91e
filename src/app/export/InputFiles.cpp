#include "app/export/InputFiles.h"

#include <sys/stat.h>

#include "output/Sha256.h"
#include "system/Descriptor.h"

namespace mapexport {
namespace {

/// Whether it is a pipe, for example; a missing file is none.
bool IsNoRegularFile(const std::string& path) {
  const Descriptor file = OpenToRead(path);
  struct stat info {};
  return file.IsOpen() && fstat(file.Get(), &info) == 0 && !S_ISREG(info.st_mode);
}

}  // namespace

std::vector<InputFile> HashInputs(std::span<const std::string> paths) {
  std::vector<InputFile> files;
  for (const std::string& path : paths) {
    files.push_back({path, IsNoRegularFile(path) ? std::string() : Sha256OfFile(path)});
  }
  return files;
}

}  // namespace mapexport
