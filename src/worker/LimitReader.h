// The limits of the process that reads foreign scenes, as far as Linux sets them, and what memory
// there is to limit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace mapexport {

/// A reader that waits for something takes no processor time. The clock may go on for this many
/// times the limit, which is enough on a machine that is busy otherwise.
inline constexpr unsigned kPatience = 10;

/// Bytes of the message file, which has that size before the reader fills it.
inline constexpr std::uint64_t kLongestMessage = std::uint64_t{64} << 20;

/// The process's limits, as many of them as are lower than those that it has anyway.
struct ReaderLimits {
  std::uint32_t seconds = 0;  ///< of processor time, and kPatience times that on the clock; 0: any
  std::uint64_t addressSpace = 0;  ///< bytes; 0: no limit
  std::uint64_t fileSize = 0;      ///< bytes of each file that is written
};

/// The limits for a reader that may take `seconds` on this machine: of its memory (MemoryLimit) a
/// quarter for the scene that is handed over, kLongestMessage for the message, the rest for the
/// reading.
ReaderLimits LimitsOfReader(std::uint32_t seconds);

/// Why a limit could not be set; empty when all are in force.
struct LackingLimits {
  std::string limits;  ///< the limits themselves, that of open files among them
  /// The timer that ends the process by SIGKILL five seconds after its time on the clock, whatever
  /// it does with the signals that come at its limits. None where the time has no limit.
  std::optional<std::string> timer;
};

/// Limits this process, for good.
LackingLimits LimitReader(const ReaderLimits& limits);

/// How much memory there is for a process, in bytes: the machine's, or less where the process is in
/// a control group (version 2) that limits it. `proc` and `groups` are where the system shows
/// groups; what is not there limits nothing.
std::uint64_t MemoryLimit(const std::string& proc = "/proc/self/cgroup",
                          const std::string& groups = "/sys/fs/cgroup");

}  // namespace mapexport
