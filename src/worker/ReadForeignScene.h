// Reads a foreign scene in a child process.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "importer/ImportScene.h"
#include "worker/ConfineReader.h"

namespace mapexport {

struct ForeignScene {
  ImportedScene imported;
  Confinement confinement;  ///< how the reading process was confined
};

/// The most bytes of meshes that a scene of unknown origin may have, where a mesh counts for each
/// node that shows it: the exporter makes several times as much of them.
std::uint64_t LargestScene();

/// The result of ImportScene. The readers run in a child process, so a crash, an endless loop or
/// exhausted memory ends only that. The child may take `seconds` of processor time and ten times
/// that of elapsed time (0: no limit), and, except under AddressSanitizer, nearly three quarters of
/// the memory as address space. Its output is dropped, it is confined (ConfineReader), and it ends
/// when this process does. `stage` is called with the name of each stage that begins, "reading"
/// once the child runs; before that there must be no other thread. Throws SceneError.
ForeignScene ReadForeignScene(const std::string& path, const ImportOptions& options,
                              std::uint32_t seconds,
                              const std::function<void(const char* name)>& stage);

}  // namespace mapexport
