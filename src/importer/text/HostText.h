// Converts the texts of foreign files to the host's.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mapexport {

/// `bytes` up to the first NUL as valid UTF-8: each byte that begins no valid character is replaced
/// by U+FFFD.
std::string ValidUtf8(std::string_view bytes);

/// `text` with the entities of ASCII FBX files (&cr; &lf; &quot; &amp; &lt; &gt;) decoded, once,
/// from left to right.
std::string DecodeEntities(std::string_view text);

/// `uri` with every %XX replaced by that byte; a percent sign without two hexadecimal digits stays.
std::string DecodePercents(std::string_view uri);

/// The first line of `text` that isn't blank, without blanks at its ends and with control
/// characters replaced by blanks: fit for a message.
std::string FirstLine(std::string_view text);

/// Replaces each control character (IsControlCode) of `text` by a blank. Returns their number.
std::uint64_t BlankControlCodes(std::string& text);

}  // namespace mapexport
