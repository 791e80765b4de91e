#include "system/StandardOutput.h"

#include <cerrno>

#include <fmt/format.h>
#include <unistd.h>

#include "system/FdOutput.h"
#include "system/RunError.h"

namespace mapexport {

bool PrintResult(const std::function<void(std::ostream&)>& print) {
  FdOutput output(STDOUT_FILENO);
  std::ostream out(&output);
  print(out);
  const int error = output.Finish();
  if (error == EPIPE) return false;
  if (error != 0) {
    throw RunError(fmt::format("standard output: cannot be written: {}", ErrnoText(error)));
  }
  return true;
}

}  // namespace mapexport
