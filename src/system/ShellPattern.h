// Shell patterns, as they stand for file names.
#pragma once

#include <string_view>

namespace mapexport {

/// Whether all of `text` is what the pattern stands for: "*" for any characters or none, "?" for
/// one, "[a-z]" for one of these, "[!a-z]" for one of the others, "\" before a character for
/// itself, everything else for itself. A "[" without its "]" stands for itself, and so does a "\"
/// at the end. Characters are those of UTF-8, else bytes; the locale plays no part. Cost: at most
/// the product of both lengths.
bool MatchesPattern(std::string_view text, std::string_view pattern);

}  // namespace mapexport
