// What ends a command with status 1, and the reasons of errors as texts.
#pragma once

#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

namespace mapexport {

/// what() is one line: the file and the reason.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The reason that `error` gives, in one line.
inline std::string ReasonOf(const std::exception& error) {
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ? "memory ran out" : error.what();
}

/// The system's text for an errno value.
inline std::string ErrnoText(int error) {
  return std::generic_category().message(error);
}

}  // namespace mapexport
