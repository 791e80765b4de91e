// Standard error, which messages and the progress line share.
#pragma once

#include <string_view>

namespace mapexport {

// May be called from several threads. Failed writes are ignored: there is no other place to report
// them.

/// Whether standard error was a terminal that understands escape sequences when this was first
/// called. A child process whose messages its parent prints inherits the answer.
bool StandardErrorIsTerminal();

/// Erases the status line and writes whole lines.
void WriteLines(std::string_view lines);

/// Replaces the status line by `status`, which must be shorter than any terminal is wide. Only for
/// a terminal.
void ShowStatusLine(std::string_view status);

/// Erases the status line, if one is shown.
void EraseStatusLine();

}  // namespace mapexport
