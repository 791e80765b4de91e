// Confines the process that reads foreign scenes.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "worker/LimitProcess.h"

namespace mapexport {

/// For each part of the confinement, empty when it is in force, or why it is not.
struct Confinement {
  std::string calls;                 ///< FilterCalls
  std::string files;                 ///< RestrictFiles
  std::string capabilities;          ///< dropping all except that for reading others' files
  std::string limits;                ///< LimitProcess
  std::optional<std::string> timer;  ///< LimitProcess; nothing when there is no time limit
};

/// From now on this process can only read `scene` and other files, and write to `kept` and the
/// standard streams, within `limits`. All other descriptors are closed, and the environment is
/// empty. Each part is applied even when others fail.
Confinement ConfineReader(const std::string& scene, std::span<const int> kept,
                          const ProcessLimits& limits);

}  // namespace mapexport
