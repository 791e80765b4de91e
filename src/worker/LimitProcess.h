// The limits of a child process, as far as Linux sets them, and what memory there is to limit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace mapexport {

/// Each is 0 where there is none; a limit that the process has anyway and that is lower stays.
struct ProcessLimits {
  std::uint32_t processorSeconds = 0;
  std::uint32_t clockSeconds = 0;
  std::uint64_t addressSpace = 0;  ///< bytes
  std::uint64_t fileSize = 0;      ///< bytes of each file that is written
  std::uint64_t openFiles = 0;     ///< their numbers are below it; what is open already stays
};

/// Why a limit could not be set; empty when all are in force.
struct LackingLimits {
  std::string limits;  ///< the limits themselves
  /// The timer that ends the process by SIGKILL five seconds after its time on the clock, whatever
  /// it does with the signals that come at its limits. None where that time has no limit.
  std::optional<std::string> timer;
};

/// Limits this process, for good. SIGXCPU and SIGALRM come when its time is over.
LackingLimits LimitProcess(const ProcessLimits& limits);

/// How much memory there is for a process, in bytes: the machine's, or less where the process is in
/// a control group (version 2) that limits it. `proc` and `groups` are where the system shows
/// groups; what is not there limits nothing.
std::uint64_t MemoryLimit(const std::string& proc = "/proc/self/cgroup",
                          const std::string& groups = "/sys/fs/cgroup");

}  // namespace mapexport
