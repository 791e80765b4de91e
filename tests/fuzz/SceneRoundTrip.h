// What every scene promises: a scene file can hold it, and gives it back.
#pragma once

#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include <sys/mman.h>

#include "fuzz/FuzzBytes.h"
#include "scene/SceneError.h"
#include "scene/SceneFile.h"
#include "system/Descriptor.h"

namespace mapexport {

/// A file in memory with a path of its own.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes) : fd_(memfd_create("fuzz", 0)) {
    if (WriteAll(fd_.Get(), bytes) != 0) std::abort();
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const { return "/proc/self/fd/" + std::to_string(fd_.Get()); }
  const Descriptor& File() const { return fd_; }

 private:
  Descriptor fd_;
};

inline void RequireRoundTrip(const Scene& scene) {
  const auto written = [](const Scene& what, auto write) {
    std::ostringstream out;
    write(what, out);
    return out.str();
  };
  const std::string once = written(scene, WriteSceneFile);
  const MemoryFile text(once);
  const MemoryFile binary(written(scene, WriteBinaryScene));
  try {
    for (const Scene& read : {ReadSceneFile(text.Path()), ReadBinaryScene(binary.File(), "a")}) {
      Require(written(read, WriteSceneFile) == once, "a scene file gives the scene back");
    }
  } catch (const SceneError& error) {
    Require(false, error.what());
  }
}

}  // namespace mapexport
