#include "app/Messages.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "importer/LimitRemarks.h"
#include "system/JsonStream.h"
#include "system/PrintableText.h"
#include "system/StandardError.h"

namespace mapexport {

Messages::Messages(bool quiet, std::string scene)
    : quiet_(quiet),
      scene_(std::move(scene)),
      coloured_(StandardErrorIsTerminal() && std::getenv("NO_COLOR") == nullptr) {}

void Messages::Error(std::string_view code, std::string_view text) const {
  if (MessagesAreJson()) {
    PrintJson("error", code, text);
  } else {
    Print("error", "31", text);
  }
}

void Messages::Warning(RemarkCode code, std::string_view text, std::uint64_t count) {
  Tell(MakeWarning(code, std::string(text), count));
}

void Messages::Note(RemarkCode code, std::string_view text, std::uint64_t count) {
  Tell(MakeNote(code, std::string(text), count));
}

void Messages::Tell(Remark remark) {
  PrintRemark(remark);
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
    if (MessagesAreJson() || (code.printed < kMostPrinted && remark.stands == 1)) {
      PrintRemark(remark);
      ++code.printed;
    } else {
      code.others += remark.stands;
    }
    told_.push_back(std::move(remark));
  }
  for (const auto& [name, code] : codes) {
    if (code.others == 0) continue;
    PrintRemark({code.kind, name,
                 fmt::format("{}: {}", about, MoreLikeThese(code.others, code.kind, name))});
  }
}

void Messages::PrintRemark(const Remark& remark) const {
  const bool isWarning = remark.kind == RemarkKind::kWarning;
  if (quiet_ && !isWarning) return;
  const char* const severity = isWarning ? "warning" : "note";
  if (MessagesAreJson()) {
    PrintJson(severity, remark.code, remark.text, &remark);
  } else {
    Print(severity, isWarning ? "33" : "36", remark.text);
  }
}

std::string Messages::WarningParagraphs() const {
  constexpr std::size_t kMostWarnings = 8;  // for about so many, the window has room
  constexpr std::size_t kMostColumns = 200;
  std::string paragraphs;
  std::size_t warnings = 0;
  for (const Remark& remark : told_) {
    if (remark.kind != RemarkKind::kWarning || ++warnings > kMostWarnings) continue;
    paragraphs += fmt::format("\n\nwarning: {}", PrintableText(remark.text, kMostColumns));
  }
  if (warnings > kMostWarnings) {
    paragraphs += fmt::format("\n\n... and {} more", warnings - kMostWarnings);
  }
  return paragraphs;
}

void Messages::Usage(std::string_view line) const {
  if (MessagesAreJson()) {
    PrintJson("note", "usage", line);
    return;
  }
  WriteLines(fmt::format("{}\n", line));
}

void Messages::Box(std::string_view title, std::string_view text) const {
  if (quiet_) return;
  while (text.ends_with('\n')) text.remove_suffix(1);
  const std::string lines = fmt::format("{}: {}", title, text);
  if (MessagesAreJson()) {
    PrintJson("note", "message-box", lines);
  } else {
    WriteLines(lines + '\n');
  }
}

void Messages::PrintJson(std::string_view severity, std::string_view code, std::string_view text,
                         const Remark* remark) const {
  std::ostringstream line;
  JsonStream json(line);
  const auto member = [&json](std::string_view key, std::string_view value) {
    json.Key(key);
    json.Text(value);
  };
  json.Open('{', JsonStream::kOnOneLine);
  member("severity", severity);
  member("code", code);
  member("text", text);
  if (!scene_.empty()) member("scene", scene_);
  if (remark != nullptr && !remark->nodes.empty()) {
    json.Key("nodes");
    json.Open('[', JsonStream::kOnOneLine);
    for (const std::string& node : remark->nodes) json.Text(node);
    json.Close(']');
  }
  const auto number = [&json](std::string_view key, std::uint64_t value) {
    json.Key(key);
    json.Number(value);
  };
  if (remark != nullptr) number("count", remark->count);
  if (remark != nullptr && !remark->output.path.empty()) {
    member("output", remark->output.path);
    number("bytes", remark->output.bytes);
    number("triangles", remark->output.triangles);
    number("batches", remark->output.batches);
    number("collisionTriangles", remark->output.collisionTriangles);
  }
  json.Close('}');
  WriteLines(line.str());
}

void Messages::Print(std::string_view severity, std::string_view colour,
                     std::string_view text) const {
  const auto begins = [text](const std::string& name) { return text.starts_with(name + ':'); };
  const bool attributed = names_.empty() || std::ranges::any_of(names_, begins);
  const std::string line =
      PrintableText(attributed ? std::string(text) : fmt::format("{}: {}", names_.front(), text),
                    std::string::npos);
  WriteLines(coloured_ ? fmt::format("mapexport: \x1b[1;{}m{}:\x1b[0m {}\n", colour, severity, line)
                       : fmt::format("mapexport: {}: {}\n", severity, line));
}

}  // namespace mapexport
