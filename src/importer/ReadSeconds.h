// How long reading a foreign scene may take unless the person says otherwise.
#pragma once

#include <cstdint>
#include <string>

namespace mapexport {

/// Seconds of processor time for the scene at `path`: 5, and one per begun 4 MB of it, 45 at most.
/// Always 45 for a format that keeps its geometry in other files (HasDataBeside).
std::uint32_t ReadSeconds(const std::string& path);

}  // namespace mapexport
