// Confines the process that reads foreign scenes to reading.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "worker/LimitProcess.h"

namespace mapexport {

/// What of the confinement is in force: empty, or why it is not.
struct Confinement {
  std::string calls;                 ///< FilterCalls
  std::string files;                 ///< RestrictFiles
  std::string capabilities;          ///< their dropping, except to read others' files
  std::string limits;                ///< LimitProcess
  std::optional<std::string> timer;  ///< LimitProcess; none where the time has no limit
};

/// From now on this process can read `scene` and other files, and write to `kept` and the standard
/// streams, and nothing else, within `limits`; all other descriptors are closed, and the
/// environment is empty. Each part works without the others.
Confinement ConfineReader(const std::string& scene, std::span<const int> kept,
                          const ProcessLimits& limits);

}  // namespace mapexport
