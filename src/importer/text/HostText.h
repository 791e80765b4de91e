// Text of foreign files as the host keeps it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mapexport {

/// `bytes` up to the first NUL as valid UTF-8: each byte that begins no well-formed character is
/// replaced by U+FFFD.
std::string ValidUtf8(std::string_view bytes);

/// `text` with the entities by which ASCII FBX files write what their quoted texts can't hold (&cr;
/// &lf; &quot; &amp; &lt; &gt;) replaced, once, from left to right.
std::string DecodeEntities(std::string_view text);

/// `uri` with every %XX replaced by that byte; a percent sign without two hexadecimal digits stays.
std::string DecodePercents(std::string_view uri);

/// The first line of `text` that isn't blank, without blanks at its ends and with control
/// characters replaced by blanks: something that can be shown as part of one line.
std::string FirstLine(std::string_view text);

/// Makes a blank of each IsControlCode in `text`. Returns how many these were.
std::uint64_t BlankControlCodes(std::string& text);

}  // namespace mapexport
