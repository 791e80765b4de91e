#include "app/export/ExporterTalk.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "system/Utf8.h"

namespace mapexport {
namespace {

constexpr const char* kSuccessTitle = "Text Scene Export";
constexpr const char* kCountsTitle = "Results";
constexpr std::string_view kNoLog = "Unable to open the file [";
constexpr std::string_view kCutLog = "Unable to write the file [";
constexpr std::string_view kNoCxp = "Could not load CXP file ";
constexpr std::string_view kException = "Export ended by an exception: ";
constexpr std::string_view kInvalidFace = "Invalid FACE in GROUP";

/// Whether a line of the log, without its line end, has a control character. Tabs at its start are
/// the exporter's own.
bool HasControls(std::string_view line) {
  while (line.starts_with('\t')) line.remove_prefix(1);
  while (!line.empty()) {
    const CodePoint point = FirstCodePoint(line);
    if (IsControlCode(point.value)) return true;  // a bare byte counts, too
    line.remove_prefix(point.bytes);
  }
  return false;
}

/// The number at the start of `text`; empty for any other text.
std::optional<std::uint64_t> LeadingNumber(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc{} ? std::optional(number) : std::nullopt;
}

/// The counts of "12 faces, ... -> 10 faces, ...".
std::optional<ExporterTalk::FaceCounts> FaceCountsOf(std::string_view text) {
  constexpr std::string_view kArrow = "-> ";
  const std::size_t arrow = text.find(kArrow);
  if (arrow == std::string_view::npos) return std::nullopt;
  const auto before = LeadingNumber(text);
  const auto after = LeadingNumber(text.substr(arrow + kArrow.size()));
  if (!before || !after) return std::nullopt;
  return ExporterTalk::FaceCounts{*before, *after};
}

}  // namespace

void ExporterTalk::HearMessageBox(const std::string& title, const std::string& text) {
  if (title == kCountsTitle) faces_ = FaceCountsOf(text);
  if (title != kSuccessTitle) {
    Tell(title, text);
    return;
  }
  succeeded_ = true;
  successText_ = text;
}

void ExporterTalk::HearDebugOutput(const std::string& text) {
  std::string_view line = text;
  if (line.ends_with('\n')) line.remove_suffix(1);
  logHasControls_ = logHasControls_ || HasControls(line);
  while (line.ends_with('\n')) line.remove_suffix(1);
  if (line.starts_with(kInvalidFace)) {
    ++invalidFaces_;
    line.remove_prefix(kInvalidFace.size());
    // Those of a node follow each other.
    if (degenerateNodes_.empty() || degenerateNodes_.back() != line) {
      degenerateNodes_.emplace_back(line);
    }
  } else if (line.starts_with(kNoLog) && line.ends_with(']')) {
    hasLog_ = false;
    log_.WarnOfNone(messages_);
  } else if (line.starts_with(kCutLog) && line.ends_with(']')) {
    hasLog_ = false;
    messages_.Warning(
        "export-log-cut",
        fmt::format("{}: cannot be written any more; the log ends there", log_.Name()));
  } else if (line.starts_with(kNoCxp)) {
    line.remove_prefix(kNoCxp.size());
    if (line.empty()) return;  // no database is named
    cxpFailed_ = true;
    messages_.Warning(
        "cxp-unreadable",
        fmt::format("{}: the CXP database cannot be read; no texture is transparent", line));
  } else if (line.starts_with(kException)) {
    line.remove_prefix(kException.size());
    exception_ = line == "std::bad_alloc" ? "memory ran out" : line;
  }
}

void ExporterTalk::PrintCounts() {
  if (invalidFaces_ == 0) return;
  const std::string log = hasLog_ ? log_.Name() : std::string();
  std::string where;
  if (!log.empty()) {
    where = fmt::format(" (see {}{})", log,
                        logHasControls_ ? "; names in it hold control characters, which act on a "
                                          "terminal"
                                        : "");
  }
  Remark remark = MakeNote("left-out-degenerate-triangles",
                           fmt::format("{} degenerate triangle{} left out{}", invalidFaces_,
                                       invalidFaces_ == 1 ? " was" : "s were", where),
                           invalidFaces_);
  remark.nodes = degenerateNodes_;
  messages_.Tell(std::move(remark));
}

void ExporterTalk::TellSuccess() const {
  Tell(kSuccessTitle, successText_);
}

void ExporterTalk::Tell(const std::string& title, const std::string& text) const {
  messages_.Box(title, text);
  if (showBox_) showBox_(title, text);
}

}  // namespace mapexport
