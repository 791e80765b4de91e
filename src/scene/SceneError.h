// The one error of everything that reads scenes.
#pragma once

#include <stdexcept>
#include <string>

namespace mapexport {

/// A scene that can't be had: what() is one line, "FILE: PLACE: what is wrong" (without PLACE where
/// there is none), ready to be shown.
class SceneError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace mapexport
