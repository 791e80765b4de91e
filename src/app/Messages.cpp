#include "app/Messages.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include <fmt/format.h>
#include <unistd.h>

#include "modelreader/PrintableText.h"

namespace mapexport {
namespace {

bool TerminalShowsColours() {
  const char* const term = std::getenv("TERM");
  return isatty(STDERR_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr && term != nullptr &&
         std::string_view(term) != "dumb";
}

void WriteToStandardError(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

Messages::Messages(bool quiet) : quiet_(quiet), coloured_(TerminalShowsColours()) {}

void Messages::Error(std::string_view text) const {
  Print("error", "31", text);
}

void Messages::Warning(std::string_view text) const {
  Print("warning", "33", text);
}

void Messages::Note(std::string_view text) const {
  if (!quiet_) Print("note", "36", text);
}

void Messages::Usage(std::string_view line) const {
  WriteToStandardError(fmt::format("{}\n", line));
}

void Messages::Box(std::string_view title, std::string_view text) const {
  if (quiet_) return;
  while (text.ends_with('\n')) text.remove_suffix(1);
  WriteToStandardError(fmt::format("{}: {}\n", title, text));
}

void Messages::Print(std::string_view kind, std::string_view colour, std::string_view text) const {
  const std::string line = PrintableText(text, std::string::npos);
  WriteToStandardError(coloured_
                           ? fmt::format("mapexport: \x1b[1;{}m{}:\x1b[0m {}\n", colour, kind, line)
                           : fmt::format("mapexport: {}: {}\n", kind, line));
}

}  // namespace mapexport
