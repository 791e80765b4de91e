#include "modelreader/ReadModelFile.h"

#include <algorithm>
#include <new>
#include <optional>

#include <mapexport/ModelReader.h>

#include "modelreader/CheckParts.h"
#include "modelreader/CollectModel.h"
#include "modelreader/LoadBytes.h"
#include "modelreader/StrictSource.h"

namespace mapexport {

namespace {

/// Hands the parts of the file to `sink`. Returns what is wrong with the file.
template <class Sink>
std::vector<ModelProblem> ReadBytes(std::span<const std::byte> bytes, ModelLayout layout,
                                    Sink& sink) {
  ProblemList problems;
  if (bytes.empty()) {
    problems.AddToFile(ModelFault::kEmpty);
  } else {
    StrictSource in({bytes.data(), bytes.size()}, layout, problems);
    reader::Records<reader::Material> materials;
    reader::Records<reader::Group> groups;
    try {
      reader::detail::ReadModel(in, materials, groups, sink);
    } catch (const Unreadable&) {  // its problem is noted
    } catch (const StopReading&) {
    }
  }
  return problems.Take();
}

ModelCheckResult CheckModelBytes(std::span<const std::byte> bytes, ModelLayout layout) {
  ModelCheckResult result;
  result.lengths.layout = layout;
  CheckParts check(result.lengths);
  result.problems = ReadBytes(bytes, layout, check);
  return result;
}

/// What `read` returns for the bytes of the file at `path`; for the first ones alone when they are
/// not the start tag, because nothing else counts then. A file that can't be read has this one
/// problem.
template <class Result>
Result ReadFile(const std::string& path, ModelLayout layout,
                Result (*read)(std::span<const std::byte>, ModelLayout)) {
  ProblemList problems;
  try {
    const std::optional<LoadedBytes> bytes = LoadBytes(path, BeginsAsModel, problems);
    if (bytes) return read(bytes->View(), layout);
  } catch (const std::bad_alloc&) {  // all that was read is given back by now
    problems.AddToFile(ModelFault::kNoMemory);
  }
  Result result = read({}, layout);
  result.problems = problems.Take();
  return result;
}

}  // namespace

bool BeginsAsModel(std::span<const std::byte> beginning) {
  ProblemList unused;
  return StrictSource({beginning.data(), beginning.size()}, ModelLayout::kKob, unused)
      .StandsAt(0, reader::detail::kStartTag);
}

bool ModelReadResult::Sound() const {
  return std::none_of(problems.begin(), problems.end(), [](const ModelProblem& problem) {
    return problem.severity == ModelSeverity::kError;
  });
}

ModelReadResult ReadModelBytes(std::span<const std::byte> bytes, ModelLayout layout) {
  ModelReadResult result;
  result.model.layout = layout;
  result.lengths.layout = layout;
  CollectModel collected(result.model, result.lengths);
  result.problems = ReadBytes(bytes, layout, collected);
  return result;
}

ModelReadResult ReadModelFile(const std::string& path, ModelLayout layout) {
  return ReadFile<ModelReadResult>(path, layout, ReadModelBytes);
}

ModelCheckResult CheckModelFile(const std::string& path, ModelLayout layout) {
  return ReadFile<ModelCheckResult>(path, layout, CheckModelBytes);
}

}  // namespace mapexport
