// The error of everything that reads or writes settings files.
#pragma once

#include <stdexcept>
#include <string>

#include "system/RunError.h"

namespace mapexport {

/// What is wrong with a settings file, on one line and without the file's path ("line 3: ...").
class SettingsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  /// `what` and the system's words for the error number `error`.
  SettingsError(const std::string& what, int error)
      : std::runtime_error(what + ": " + ErrnoText(error)) {}
};

}  // namespace mapexport
