// How the program ends.
#pragma once

namespace mapexport {

enum class ExitStatus {
  kDone = 0,
  kFailed = 1,         ///< the input could not be read or the output not be written
  kWrongUsage = 2,     ///< the command line is wrong
  kOverlongLists = 4,  ///< done, but a list is longer than 16-bit indices can address
};

}  // namespace mapexport
