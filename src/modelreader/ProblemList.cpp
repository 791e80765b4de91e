#include "modelreader/ProblemList.h"

#include <cmath>

#include <fmt/args.h>
#include <fmt/format.h>

namespace mapexport {

namespace {

struct Entry {
  ModelSeverity severity;
  const char* sentence;  ///< {0}, {1}, ... are the values
};

constexpr Entry Error(const char* sentence) {
  return {ModelSeverity::kError, sentence};
}
constexpr Entry Warning(const char* sentence) {
  return {ModelSeverity::kWarning, sentence};
}

/// All faults, with their codes and texts.
constexpr Entry EntryOf(ModelFault fault) {
  using enum ModelFault;
  switch (fault) {
    case kCannotOpen:
      return Error("can't be opened: {0}");
    case kIsFolder:
      return Error("is a folder, not a model file");
    case kNotRegular:
      return Error("is not a regular file");
    case kCannotRead:
      return Error("can't be read: {0}");
    case kEmpty:
      return Error("is empty");
    case kTooLarge:
      return Error("has {0} bytes: sizes of 32 bits can't describe a file of {1} bytes or more");
    case kNoMemory:
      return Error("there is not enough memory to read it");
    case kPointIndex:
      return Error("corner {0} is collision point {1}, but the group has {2} of them");
    case kBatchIndex:
      return Error("is {0}, but the group has {1} batches (-1 is none)");
    case kSurfaceSetIndex:
      return Error("is {0}, but the group has {1} surface sets");
    case kFaceIndex:
      return Error("is face {0}, but the group has {1} faces");
    case kPlaneCount:
      return Error("holds {0} planes, but {1} faces have no batch");
    case kPlanePosition:
      return Error("is {0}, must be {1}: faces without a batch have the planes in turn");
    case kBatchPosition:
      return Error("is {0}, but batch {1} has {2} faces");
    case kPositionTaken:
      return Error("is {0}, the place of an earlier face in batch {1}");
    case kFaceVertices:
      return Error("are {0}, but batch {1} has {2} at this face's position");
    case kFacesMissing:
      return Error("holds {0} faces, but {1} of them are in the face table");
    case kUndrawnSet:
      return Error("is -1, but the face's surface set {0} is not \"notrendered\" (flags {1})");
    case kDrawnSet:
      return Error("is {0}, but the face's surface set {1} is \"notrendered\"");
    case kNotInSet:
      return Error("is {0}, but that surface set does not list the face");
    case kInOtherSet:
      return Error("is face {0}, but that face names surface set {1}");
    case kListedAgain:
      return Error("is face {0}, which is listed too often");
    case kNotFinite:
      return Warning("is {0}, not a finite number");
    case kIndicesCut:
      return Warning(
          "{0} entries; indices of 16 bits reach {1}, so they are cut and can't be checked");
    case kTooManyErrors:
      return Error("reading stopped after {0} errors; there may be more");
  }
  return Error("");
}

Entry EntryOf(const ModelProblemCode& code) {
  const auto* const fault = std::get_if<ModelFault>(&code);
  if (fault != nullptr) return EntryOf(*fault);
  return Error(reader::detail::TextOf(std::get<reader::Fault>(code)).sentence);
}

std::string Sentence(const Entry& entry, const std::vector<std::string>& values) {
  fmt::dynamic_format_arg_store<fmt::format_context> arguments;
  for (const std::string& value : values) arguments.push_back(value);
  return fmt::vformat(entry.sentence, arguments);
}

}  // namespace

void ProblemList::AddToFile(ModelProblemCode code, std::string_view value, std::string_view limit) {
  Add(code, std::nullopt, Place(""), value, limit);
}

void ProblemList::AddNotFinite(std::uint64_t times, std::uint64_t offset, const Place& entry,
                               float value) {
  const auto [found, isNew] = notFinite_.try_emplace(entry.Kind());
  found->second.times += times;
  if (!isNew) return;
  found->second.problem = problems_.size();
  const char* shown = std::isnan(value) ? "NaN" : value > 0 ? "Infinity" : "-Infinity";
  Add(ModelFault::kNotFinite, offset, entry, std::string_view(shown));
}

void ProblemList::AddSentence(ModelProblemCode code, std::optional<std::uint64_t> offset,
                              const Place& place, const std::vector<std::string>& values) {
  const Entry entry = EntryOf(code);
  problems_.push_back({code, entry.severity, offset, place.Path(), Sentence(entry, values)});
  if (entry.severity != ModelSeverity::kError) return;
  if (++errors_ != kMaxErrors) return;
  const ModelFault last = ModelFault::kTooManyErrors;
  problems_.push_back({last, ModelSeverity::kError, std::nullopt, "",
                       Sentence(EntryOf(last), {std::to_string(kMaxErrors)})});
  throw StopReading{};
}

std::vector<ModelProblem> ProblemList::Take() {
  for (const auto& [kind, repeated] : notFinite_) {
    if (repeated.times == 1) continue;
    problems_[repeated.problem].text +=
        fmt::format("; there are {} such numbers at places of this kind", repeated.times);
  }
  notFinite_.clear();
  return std::move(problems_);
}

std::string ToLine(const ModelProblem& problem) {
  std::string line;
  if (problem.offset) line += "offset " + std::to_string(*problem.offset) + ": ";
  if (!problem.place.empty()) line += problem.place + ": ";
  return line + problem.text;
}

}  // namespace mapexport
