#include "app/export/ExportInChild.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <variant>

#include <fmt/format.h>
#include <signal.h>

#include "app/Messages.h"
#include "app/ModelPage.h"
#include "app/export/ExportTargets.h"
#include "output/OutputPlace.h"
#include "system/StandardError.h"
#include "worker/HandOver.h"

namespace mapexport {
namespace {

// The most of what a process wrote to standard error that is shown: messages are fewer, even as
// JSON with the names of many nodes.
constexpr std::uint64_t kMostShown = std::uint64_t{64} << 20;

constexpr std::uint64_t kNoNumber = UINT64_MAX;  ///< of a setting that is a text

std::string ToBytes(const SceneResult& result) {
  std::string bytes;
  PutNumber(bytes, static_cast<std::uint64_t>(result.status));
  for (const std::string* text : {&result.error, &result.rule, &result.exported.text,
                                  &result.report, &result.exported.output.path}) {
    PutText(bytes, *text);
  }
  for (const std::uint64_t number :
       {result.exported.output.bytes, result.exported.output.triangles,
        result.exported.output.batches, result.exported.output.collisionTriangles}) {
    PutNumber(bytes, number);
  }
  PutNumber(bytes, result.lacksFiles ? 1 : 0);
  PutNumber(bytes, result.settings.size());
  for (const auto& [key, name, value] : result.settings) {
    const auto* const text = std::get_if<std::string>(&value);
    for (const std::string& part : {key, name, text == nullptr ? std::string() : *text}) {
      PutText(bytes, part);
    }
    PutNumber(bytes, text == nullptr ? std::get<std::uint32_t>(value) : kNoNumber);
  }
  for (const auto* files : {&result.sideFiles, &result.dependencies}) {
    PutNumber(bytes, files->size());
    for (const std::string& file : *files) PutText(bytes, file);
  }
  return bytes;
}

SceneResult ResultOf(const std::string& bytes) {
  MessageParts parts(bytes);
  SceneResult result;
  result.status = static_cast<ExitStatus>(parts.Number());
  for (std::string* text : {&result.error, &result.rule, &result.exported.text, &result.report,
                            &result.exported.output.path}) {
    *text = parts.Text();
  }
  for (std::uint64_t* number :
       {&result.exported.output.bytes, &result.exported.output.triangles,
        &result.exported.output.batches, &result.exported.output.collisionTriangles}) {
    *number = parts.Number();
  }
  result.lacksFiles = parts.Number() != 0;
  for (std::uint64_t count = parts.Number(); count > 0; --count) {
    RegistryChange change{parts.Text(), parts.Text(), parts.Text()};
    const std::uint64_t number = parts.Number();
    if (number != kNoNumber) change.value = static_cast<std::uint32_t>(number);
    result.settings.push_back(std::move(change));
  }
  for (auto* files : {&result.sideFiles, &result.dependencies}) {
    for (std::uint64_t count = parts.Number(); count > 0; --count) files->push_back(parts.Text());
  }
  return result;
}

/// Shows what a process wrote to standard error, in whole lines. Where messages are JSON, lines
/// that are not (of the C library, before it ends a process) become errors.
void Show(std::string_view lines, const ExportArguments& arguments) {
  while (!lines.empty()) {
    const std::size_t end = std::min(lines.find('\n'), lines.size());
    const std::string_view line = lines.substr(0, end);
    lines.remove_prefix(std::min(end + 1, lines.size()));
    if (MessagesAreJson() && !(line.starts_with('{') && line.ends_with('}'))) {
      Messages(false, arguments.scene.path).Error("failed", line);
    } else {
      WriteLines(fmt::format("{}\n", line));
    }
  }
}

/// Why a process ended without a result.
std::string WhyEnded(const ChildOutcome& outcome) {
  switch (outcome.end) {
    case ChildEnd::kMemoryRanOut:
      return "memory ran out";
    case ChildEnd::kSignal:
      return fmt::format("its process was ended by a signal ({}){}", SignalText(outcome.number),
                         outcome.number == SIGKILL ? ", perhaps because memory ran out" : "");
    case ChildEnd::kOtherStatus:
    case ChildEnd::kDone:
      return fmt::format("its process ended unexpectedly (exit status {})", outcome.number);
    case ChildEnd::kRefused:
    case ChildEnd::kCannotHandOver:
      break;
  }
  return outcome.message.empty() ? "its process can't hand over its result" : outcome.message;
}

}  // namespace

ChildTask ExportTask(std::function<SceneResult()> exportOne) {
  ChildTask task;
  task.run = [exportOne = std::move(exportOne)](FdOutput&) { return ToBytes(exportOne()); };
  task.hasTerminal = true;  // its messages are collected
  task.signalOfOrphans = SIGTERM;
  return task;
}

SceneResult TakeResult(const ExportArguments& arguments, const ChildOutcome& outcome) {
  Show(BytesOf(outcome.output, 0, kMostShown), arguments);
  try {
    if (outcome.end == ChildEnd::kDone) return ResultOf(outcome.message);
  } catch (const BadMessage&) {
    // As when it ended too early.
  }
  const std::string output = ModelPath(arguments.output);
  for (const std::string& file : {output, PagePath(output), LogPath(arguments)}) {
    OutputPlace::RemoveLeftOvers(file);
  }
  SceneResult result;
  result.error = fmt::format("{}: not exported: {}", arguments.scene.path, WhyEnded(outcome));
  return result;
}

}  // namespace mapexport
