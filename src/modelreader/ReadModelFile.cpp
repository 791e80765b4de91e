#include "modelreader/ReadModelFile.h"

#include <algorithm>
#include <new>
#include <optional>

#include <mapexport/ModelReader.h>

#include "modelreader/CollectModel.h"
#include "modelreader/LoadBytes.h"
#include "modelreader/StrictSource.h"

namespace mapexport {

ModelLayout LayoutOfPath(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  std::string extension = dot == std::string::npos ? "" : path.substr(dot + 1);
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return extension == "qob" ? ModelLayout::kQob : ModelLayout::kKob;
}

bool ModelReadResult::Sound() const {
  return std::none_of(problems.begin(), problems.end(), [](const ModelProblem& problem) {
    return problem.severity == ModelSeverity::kError;
  });
}

ModelReadResult ReadModelBytes(std::span<const std::byte> bytes, ModelLayout layout) {
  ModelReadResult result;
  result.model.layout = layout;
  ProblemList problems;
  if (bytes.empty()) {
    problems.AddToFile(ModelProblemCode::kEmpty);
  } else {
    StrictSource in({bytes.data(), bytes.size()}, layout, problems);
    CollectModel collected(result.model);
    reader::Records<reader::Material> materials;
    reader::Records<reader::Group> groups;
    try {
      reader::detail::ReadModel(in, materials, groups, collected);
    } catch (const Unreadable&) {  // its problem is noted
    } catch (const StopReading&) {
    }
  }
  result.problems = problems.Take();
  return result;
}

ModelReadResult ReadModelFile(const std::string& path, ModelLayout layout) {
  ProblemList problems;
  try {
    const std::optional<LoadedBytes> bytes = LoadBytes(path, problems);
    if (bytes) return ReadModelBytes(bytes->View(), layout);
  } catch (const std::bad_alloc&) {  // all that was read is given back by now
    problems.AddToFile(ModelProblemCode::kNoMemory);
  }
  ModelReadResult result;
  result.model.layout = layout;
  result.problems = problems.Take();
  return result;
}

}  // namespace mapexport
