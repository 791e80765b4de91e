#include "app/Messages.h"

#include <cstdlib>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "app/StandardError.h"
#include "modelreader/PrintableText.h"

namespace mapexport {

Messages::Messages(bool quiet)
    : quiet_(quiet), coloured_(StandardErrorIsTerminal() && std::getenv("NO_COLOR") == nullptr) {}

void Messages::Error(std::string_view text) const {
  Print("error", "31", text);
}

void Messages::Warning(std::string_view code, std::string_view text, std::uint64_t count) {
  Tell({RemarkKind::kWarning, std::string(code), std::string(text), count});
}

void Messages::Note(std::string_view code, std::string_view text, std::uint64_t count) {
  Tell({RemarkKind::kNote, std::string(code), std::string(text), count});
}

void Messages::Tell(Remark remark) {
  if (remark.kind == RemarkKind::kWarning) {
    Print("warning", "33", remark.text);
  } else if (!quiet_) {
    Print("note", "36", remark.text);
  }
  told_.push_back(std::move(remark));
}

void Messages::Usage(std::string_view line) const {
  WriteLines(fmt::format("{}\n", line));
}

void Messages::Box(std::string_view title, std::string_view text) const {
  if (quiet_) return;
  while (text.ends_with('\n')) text.remove_suffix(1);
  WriteLines(fmt::format("{}: {}\n", title, text));
}

void Messages::Print(std::string_view kind, std::string_view colour, std::string_view text) const {
  const std::string line = PrintableText(text, std::string::npos);
  WriteLines(coloured_ ? fmt::format("mapexport: \x1b[1;{}m{}:\x1b[0m {}\n", colour, kind, line)
                       : fmt::format("mapexport: {}: {}\n", kind, line));
}

}  // namespace mapexport
