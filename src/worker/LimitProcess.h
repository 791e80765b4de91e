// Limits of a child process, and the memory that is available to limit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace mapexport {

/// 0 means no limit; a lower limit that the process already has stays.
struct ProcessLimits {
  std::uint32_t processorSeconds = 0;
  std::uint32_t clockSeconds = 0;
  std::uint64_t addressSpace = 0;  ///< bytes
  std::uint64_t fileSize = 0;      ///< bytes of each file that is written
  std::uint64_t openFiles = 0;     ///< new ones are below it; open ones stay
};

/// Why a limit could not be set; empty when all are in force.
struct LackingLimits {
  std::string limits;  ///< memory, time and descriptors
  /// The timer that ends the process by SIGKILL five seconds after its elapsed time limit, even if
  /// it ignores signals. Nothing when there is no such limit.
  std::optional<std::string> timer;
};

/// Limits this process for good. SIGXCPU and SIGALRM come when its time is over.
LackingLimits LimitProcess(const ProcessLimits& limits);

/// The processors that this process may use at the same time, at least one: those that its affinity
/// names, or fewer where a control group (version 2) limits it. For `proc` and `groups` see below.
std::size_t ProcessorLimit(const std::string& proc = "/proc/self/cgroup",
                           const std::string& groups = "/sys/fs/cgroup");

/// The bytes of memory that are free for further processes now, within MemoryLimit().
std::uint64_t FreeMemory();

/// The bytes of memory available to a process: the machine's, or less where the process is in a
/// control group (version 2) that limits it. `proc` and `groups` are where the system shows groups;
/// missing files mean no limit.
std::uint64_t MemoryLimit(const std::string& proc = "/proc/self/cgroup",
                          const std::string& groups = "/sys/fs/cgroup");

}  // namespace mapexport
