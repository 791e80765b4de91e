// How much memory there is for a process, as containers see it, too.
#pragma once

#include <cstdint>
#include <string>

namespace mapexport {

/// Bytes: those of the machine, or fewer where the process is in a control group (version 2) that
/// limits it. `proc` and `groups` are where the system shows groups; what is not there limits
/// nothing.
std::uint64_t MemoryLimit(const std::string& proc = "/proc/self/cgroup",
                          const std::string& groups = "/sys/fs/cgroup");

}  // namespace mapexport
