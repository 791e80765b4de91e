// How the program ends.
#pragma once

namespace mapexport {

enum class ExitStatus {
  kDone = 0,
  kFailed = 1,         ///< the input can't be read, the output not written or the dialog not shown
  kWrongUsage = 2,     ///< the command line is wrong
  kCancelled = 3,      ///< the export was cancelled in the dialog
  kOverlongLists = 4,  ///< done, but a list is longer than 16-bit indices can address
};

}  // namespace mapexport
