// The one error of everything that reads scenes.
#pragma once

#include <stdexcept>
#include <string>

namespace mapexport {

/// A scene can't be read. what() is "FILE: PLACE: what is wrong", without PLACE where there is
/// none. It is one line, except that FILE is the path as it was given: show it with PrintableText.
class SceneError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace mapexport
