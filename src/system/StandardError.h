// Standard error, which messages and the progress line share.
#pragma once

#include <string_view>

namespace mapexport {

// May be called from several threads. Failed writes are ignored: there is no other place to report
// them.

/// Makes every message one JSON object on its line, from now on. Before there is another thread.
void MakeMessagesJson();
bool MessagesAreJson();

/// Whether standard error was a terminal that understands escape sequences when this was first
/// called, and shows text. A child process whose messages its parent prints inherits the answer.
bool StandardErrorIsTerminal();

/// Erases the status line and writes whole lines.
void WriteLines(std::string_view lines);

/// Writes a message when there may be no memory for it. `severity` is "error" or "warning", and
/// `text` needs no escapes in JSON.
void WriteWithoutMemory(std::string_view severity, std::string_view code, std::string_view text);

/// Replaces the status line by `status`, which must be shorter than any terminal is wide. Only for
/// a terminal.
void ShowStatusLine(std::string_view status);

/// Erases the status line, if one is shown.
void EraseStatusLine();

}  // namespace mapexport
