// The document as a whole: its first and last token, its syntax, its messages.
#include "scene/JsonDocument.h"

#include <new>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "scene/FileText.h"
#include "scene/JsonSyntax.h"
#include "scene/SceneError.h"

namespace mapexport {
namespace {

// The library chooses its code on first use, and ends the program when it lacks the memory to. So
// this is done when the program is loaded, while there is nothing to lose.
[[maybe_unused]] const std::string kChosen = simdjson::get_active_implementation()->name();

constexpr std::string_view kBlanks = " \t\r\n";

// A number, word or character that is cut there can look like a defect.
constexpr std::size_t kCutToken = 8;

[[noreturn]] void FailAt(const std::string& file, std::string_view text, std::size_t offset,
                         const char* defect) {
  throw SceneError(fmt::format("{}: {}: {}", file, TextPlace(text, offset), defect));
}

}  // namespace

void JsonDocument::CheckBeginning(const std::string& file, std::string_view beginning) {
  const std::size_t first = beginning.find_first_not_of(kBlanks);
  // Of an object, wrong values come before what is broken behind them.
  if (first == std::string_view::npos || beginning[first] == '{') return;
  const JsonSyntax syntax = CheckJsonDocument(beginning);
  if (syntax.defect != nullptr && syntax.end + kCutToken < beginning.size()) {
    FailAt(file, beginning, syntax.end, syntax.defect);
  }
}

JsonDocument::JsonDocument(const std::string& file, const FileText& text, std::size_t maxDepth)
    : file_(file), text_(text.View()), lists_(text_), rest_(lists_.TakeRest()) {
  StartParsing(maxDepth);
}

JsonDocument::JsonDocument(const std::string& file, std::string_view text, std::size_t maxDepth)
    : file_(file), text_(text), rest_(text) {
  StartParsing(maxDepth);
}

JsonDocument::JsonDocument(const std::string& file, std::string&& text, std::size_t maxDepth)
    : file_(file), rest_(std::move(text)) {
  rest_.reserve(rest_.size() + simdjson::SIMDJSON_PADDING);
  text_ = rest_;
  StartParsing(maxDepth);
}

void JsonDocument::StartParsing(std::size_t maxDepth) {
  if (text_.empty()) throw SceneError(file_ + ": the file is empty");
  rest_.reserve(rest_.size() + simdjson::SIMDJSON_PADDING);
  if (const auto error = parser_.allocate(rest_.size(), maxDepth)) FailSyntax(error);
  document_ = Get(parser_.iterate(rest_));
}

simdjson::ondemand::object JsonDocument::Start() {
  simdjson::ondemand::object object;
  const simdjson::error_code error = document_.get_object().get(object);
  if (error == simdjson::SUCCESS) return object;
  if (error != simdjson::INCORRECT_TYPE) FailSyntax(error);
  const std::string_view sound = Check(CheckJsonDocument, rest_.data());
  const char first = sound[sound.find_first_not_of(kBlanks)];
  Fail(JsonPlace(), fmt::format("the document must be an object, not {}", JsonKind(first)));
}

void JsonDocument::End() {
  if (document_.current_location().error() != simdjson::OUT_OF_BOUNDS) {
    FailSyntax(simdjson::TRAILING_CONTENT);
  }
}

void JsonDocument::Fail(const JsonPlace& place, std::string_view message) const {
  const std::string where = place.ToString();
  throw SceneError(fmt::format("{}: {}{}{}", file_, where, where.empty() ? "" : ": ", message));
}

// simdjson has found a defect but reports neither its place nor its kind.
void JsonDocument::FailSyntax(simdjson::error_code error) const {
  if (error == simdjson::MEMALLOC) throw std::bad_alloc();
  Check(CheckJsonDocument, rest_.data());
  throw SceneError(fmt::format("{}: {}", file_, simdjson::error_message(error)));
}

std::string_view JsonDocument::Check(JsonSyntax (*check)(std::string_view),
                                     const char* start) const {
  const std::size_t offset = lists_.OffsetInText(static_cast<std::size_t>(start - rest_.data()));
  const JsonSyntax syntax = check(text_.substr(offset));
  if (syntax.defect == nullptr) return text_.substr(offset, syntax.end);

  FailAt(file_, text_, offset + syntax.end, syntax.defect);
}

}  // namespace mapexport
