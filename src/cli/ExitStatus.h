// The program's exit statuses.
#pragma once

#include <array>

namespace mapexport {

enum class ExitStatus {
  kDone = 0,
  kFailed = 1,         ///< the input can't be read, the output not written or the dialog not shown
  kWrongUsage = 2,     ///< the command line is wrong
  kCancelled = 3,      ///< the export was cancelled in the dialog
  kOverlongLists = 4,  ///< done, but a list is longer than 16-bit indices can address
  kDifferent = 5,      ///< by `diff`: the two files differ in content
};

struct ExitStatusInfo {
  ExitStatus status;
  const char* meaning;
};

/// What the help says of each, in numerical order.
inline constexpr std::array kExitStatuses{
    ExitStatusInfo{ExitStatus::kDone, "done"},
    ExitStatusInfo{ExitStatus::kFailed,
                   "the input could not be read or the output not be written; an older output "
                   "stays as it was"},
    ExitStatusInfo{ExitStatus::kWrongUsage, "the command line is wrong"},
    ExitStatusInfo{ExitStatus::kCancelled, "the export was cancelled in the dialog"},
    ExitStatusInfo{ExitStatus::kOverlongLists,
                   "done, but a list is longer than the file's 16-bit indices can address"},
    ExitStatusInfo{ExitStatus::kDifferent, "`diff`: the files differ in more than the order"},
};

}  // namespace mapexport
