// Standard error, which messages and the progress line share.
#pragma once

#include <string_view>

namespace mapexport {

// May be called from several threads. A standard error that can't be written is not told anywhere.

/// Whether standard error is a terminal that understands escape sequences.
bool StandardErrorIsTerminal();

/// Writes whole lines; a status line that is shown gives way to them.
void WriteLines(std::string_view lines);

/// Shows `status`, shorter than any terminal is wide, in place of the status line before it. Only
/// for a terminal.
void ShowStatusLine(std::string_view status);

/// Takes the status line away, if one is shown.
void EraseStatusLine();

}  // namespace mapexport
