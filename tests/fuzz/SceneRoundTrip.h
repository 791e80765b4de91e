// What every scene promises: a scene file can hold it, and gives it back.
#pragma once

#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/FuzzBytes.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"

namespace mapexport {

/// A file in memory with a path of its own.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes) : fd_(memfd_create("fuzz", 0)) {
    if (write(fd_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) std::abort();
  }
  ~MemoryFile() { close(fd_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const { return "/proc/self/fd/" + std::to_string(fd_); }

 private:
  int fd_;
};

inline void RequireRoundTrip(const Scene& scene) {
  const auto written = [](const Scene& what) {
    std::ostringstream out;
    WriteSceneFile(what, out);
    return out.str();
  };
  const std::string once = written(scene);
  const MemoryFile file(once);
  try {
    Require(written(ReadSceneFile(file.Path())) == once, "a scene file gives the scene back");
  } catch (const SceneError& error) {
    Require(false, error.what());
  }
}

}  // namespace mapexport
