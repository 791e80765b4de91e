#include "system/StandardOutput.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fmt/format.h>
#include <unistd.h>

#include "system/FdOutput.h"
#include "system/RunError.h"

namespace mapexport {

bool IsStandardOutput(std::string_view path) {
  constexpr std::array<std::string_view, 4> kNames{"-", "/dev/stdout", "/dev/fd/1",
                                                   "/proc/self/fd/1"};
  return std::ranges::find(kNames, path) != kNames.end();
}

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
