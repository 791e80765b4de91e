// Strict check of JSON text, with the exact place of the first defect.
#pragma once

#include <cstddef>
#include <string_view>

namespace mapexport {

struct JsonSyntax {
  const char* defect = nullptr;  ///< what is wrong; null: nothing
  std::size_t end = 0;           ///< offset behind the value, or of the defect
};

/// Checks a text that must be one JSON value and nothing else. It is held against RFC 8259, UTF-8
/// included; a lone surrogate written as an escape is within its grammar. Any nesting is fine: it
/// takes one byte of memory per level and no stack.
JsonSyntax CheckJsonDocument(std::string_view text);

/// The same for the value that `text` starts with, as part of a document: of what follows, only the
/// next character is looked at, which must be a comma or a closing bracket.
JsonSyntax CheckJsonValue(std::string_view text);

/// The same for a member's name and the colon behind it.
JsonSyntax CheckJsonName(std::string_view text);

}  // namespace mapexport
