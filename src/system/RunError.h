// What ends a command with status 1.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace mapexport {

/// what() is one line: which file, and why.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Why something ended by `error`, in one line.
std::string ReasonOf(const std::exception& error);

/// The system's text for an errno value, whatever the locale.
std::string ErrnoText(int error);

}  // namespace mapexport
