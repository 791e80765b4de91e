// What a reader of tokens raises when its input breaks its syntax.
#pragma once

#include <string>

namespace mapexport::KXParser {

// Neither type derives from std::exception: a handler for standard exceptions does not catch them.

/// The input ends where the syntax requires another token.
class ReadException {};

/// A token is not what the syntax requires at its place.
class TokenException {
 public:
  std::string required;  ///< what the syntax asks for
  std::string found;     ///< the token at that place
};

}  // namespace mapexport::KXParser
