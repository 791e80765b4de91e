// How messages call the kinds of JSON values.
#pragma once

#include <string_view>

namespace mapexport {

/// "an object", "a number", ...: what a sound JSON value is that starts with that character.
inline std::string_view JsonKind(char first) {
  switch (first) {
    case '{':
      return "an object";
    case '[':
      return "an array";
    case '"':
      return "text";
    case 'n':
      return "null";
    case 't':
    case 'f':
      return "a bool";
    default:
      return "a number";
  }
}

}  // namespace mapexport
