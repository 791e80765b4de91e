// Any bytes as a scene file; a scene that is read must come back the same from what is written of
// it.

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "scene/SceneError.h"
#include "scene/SceneFile.h"

namespace {

/// A file in memory with a path of its own.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& bytes) : fd_(memfd_create("scene", 0)) {
    if (write(fd_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) abort();
  }
  ~MemoryFile() { close(fd_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const { return "/proc/self/fd/" + std::to_string(fd_); }

 private:
  int fd_;
};

std::string Written(const mapexport::Scene& scene) {
  std::ostringstream out;
  mapexport::WriteSceneFile(scene, out);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  try {
    const MemoryFile file(std::string(reinterpret_cast<const char*>(data), size));
    const std::string once = Written(ReadSceneFile(file.Path()));
    const MemoryFile copy(once);
    if (Written(ReadSceneFile(copy.Path())) != once) abort();
  } catch (const SceneError&) {
  }
  return 0;
}
