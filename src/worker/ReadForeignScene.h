// Reads a foreign scene in a process of its own.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "importer/ImportScene.h"
#include "worker/ConfineReader.h"

namespace mapexport {

struct ForeignScene {
  ImportedScene imported;
  Confinement confinement;  ///< of the process that read it
};

/// What ImportScene gives, whatever the file does to the readers: they run in a child process, and
/// a crash, an endless loop or a hunger for memory ends only that. The child may take `seconds` of
/// processor time, and ten times that on the clock (0: any), and, but under AddressSanitizer,
/// nearly three quarters of the memory as address space; nothing that it prints is seen, and it is
/// confined (ConfineReader). It ends when this process does. `stage` is called with the name of
/// each stage that begins, "reading" once the child runs: there must be no other thread before.
/// Throws SceneError.
ForeignScene ReadForeignScene(const std::string& path, const ImportOptions& options,
                              std::uint32_t seconds,
                              const std::function<void(const char* name)>& stage);

}  // namespace mapexport
