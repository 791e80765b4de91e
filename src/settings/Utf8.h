// The check that a text is UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace mapexport {

/// Position of the first byte that does not begin a whole UTF-8 sequence (overlong forms,
/// surrogates and values above U+10FFFF are none); npos when there is no such byte.
std::size_t FindInvalidUtf8(std::string_view text);

}  // namespace mapexport
