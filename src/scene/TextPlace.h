// Where a byte stands in a text, as a person counts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mapexport {

/// "line 3, column 7" of the byte at `offset`, which may be the text's end; both count from 1, the
/// column in characters of UTF-8.
std::string TextPlace(std::string_view text, std::size_t offset);

}  // namespace mapexport
