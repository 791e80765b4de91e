#include "app/Messages.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "importer/LimitRemarks.h"
#include "system/PrintableText.h"
#include "system/StandardError.h"

namespace mapexport {

Messages::Messages(bool quiet)
    : quiet_(quiet), coloured_(StandardErrorIsTerminal() && std::getenv("NO_COLOR") == nullptr) {}

void Messages::Error(std::string_view text) const {
  Print("error", "31", text);
}

void Messages::Warning(RemarkCode code, std::string_view text, std::uint64_t count) {
  Tell(MakeWarning(code, std::string(text), count));
}

void Messages::Note(RemarkCode code, std::string_view text, std::uint64_t count) {
  Tell(MakeNote(code, std::string(text), count));
}

void Messages::Tell(Remark remark) {
  PrintRemark(remark.kind, remark.text);
  told_.push_back(std::move(remark));
}

void Messages::TellAll(const std::string& about, Remarks remarks) {
  constexpr std::uint64_t kMostPrinted = 10;
  struct Code {
    RemarkKind kind;
    std::uint64_t printed = 0;
    std::uint64_t others = 0;
  };
  LimitRemarks(remarks);
  std::map<std::string, Code> codes;
  for (Remark& remark : remarks) {
    remark.text = fmt::format("{}: {}", about, remark.text);
    Code& code = codes.try_emplace(remark.code, Code{remark.kind}).first->second;
    if (code.printed < kMostPrinted && remark.stands == 1) {
      PrintRemark(remark.kind, remark.text);
      ++code.printed;
    } else {
      code.others += remark.stands;
    }
    told_.push_back(std::move(remark));
  }
  for (const auto& [name, code] : codes) {
    if (code.others == 0) continue;
    PrintRemark(code.kind,
                fmt::format("{}: {}", about, MoreLikeThese(code.others, code.kind, name)));
  }
}

void Messages::PrintRemark(RemarkKind kind, std::string_view text) const {
  if (kind == RemarkKind::kWarning) {
    Print("warning", "33", text);
  } else if (!quiet_) {
    Print("note", "36", text);
  }
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
  const auto begins = [text](const std::string& name) { return text.starts_with(name + ':'); };
  const bool attributed = names_.empty() || std::ranges::any_of(names_, begins);
  const std::string line =
      PrintableText(attributed ? std::string(text) : fmt::format("{}: {}", names_.front(), text),
                    std::string::npos);
  WriteLines(coloured_ ? fmt::format("mapexport: \x1b[1;{}m{}:\x1b[0m {}\n", colour, kind, line)
                       : fmt::format("mapexport: {}: {}\n", kind, line));
}

}  // namespace mapexport
