// Strict check of JSON text, with the exact place of the first defect.
#pragma once

#include <cstddef>
#include <string_view>

namespace mapexport {

struct JsonSyntax {
  const char* defect = nullptr;  ///< what is wrong; null: nothing
  std::size_t end = 0;           ///< offset behind the value, or of the defect
};

/// Checks that `text` is one JSON value and nothing else, by RFC 8259 and in UTF-8. (Its grammar
/// allows an escape for a lone surrogate.) Nesting is not limited: a level takes one byte of memory
/// and no stack.
JsonSyntax CheckJsonDocument(std::string_view text);

/// The same for the value at the start of `text`, as part of a document: a comma or a closing
/// bracket must follow; what comes behind it is not checked.
JsonSyntax CheckJsonValue(std::string_view text);

/// The same for a member's name and the colon behind it.
JsonSyntax CheckJsonName(std::string_view text);

/// "an object", "a number", ...: the kind of a sound JSON value by its first character.
std::string_view JsonKind(char first);

}  // namespace mapexport
