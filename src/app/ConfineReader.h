// Confines the process that reads foreign scenes to reading.
#pragma once

#include <span>
#include <string>

namespace mapexport {

/// What of the confinement is in force: empty, or why it is not.
struct Confinement {
  std::string calls;         ///< FilterCalls
  std::string files;         ///< ForbidWriting
  std::string capabilities;  ///< DropCapabilities
};

/// From now on this process can read files, a few dozen at once, and write to `kept` and the
/// standard streams, and nothing else; all other descriptors are closed, and the environment is
/// empty. Each part works without the others.
Confinement ConfineReader(std::span<const int> kept);

}  // namespace mapexport
