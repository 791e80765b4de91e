// One thing that is wrong with a model file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include <mapexport/ModelReader.h>

namespace mapexport {

/// Faults that this reader finds in addition to those of the grammar.
enum class ModelFault {
  // The file as a whole; these have no offset.
  kCannotOpen,
  kIsFolder,
  kNotRegular,
  kCannotRead,
  kEmpty,
  kTooLarge,
  kNoMemory,
  // The face table against the other lists.
  kPointIndex,
  kBatchIndex,
  kSurfaceSetIndex,
  kFaceIndex,
  kPlaneCount,
  kPlanePosition,
  kBatchPosition,
  kPositionTaken,
  kFaceVertices,
  kFacesMissing,
  kUndrawnSet,
  kDrawnSet,
  kNotInSet,
  kInOtherSet,
  kListedAgain,
  // Warnings.
  kNotFinite,
  kIndicesCut,
  // The last line when there are too many.
  kTooManyErrors,
};

using ModelProblemCode = std::variant<reader::Fault, ModelFault>;

enum class ModelSeverity {
  kError,   ///< the file is not sound
  kWarning  ///< the exporter may have written the file, but it is probably not what was wanted
};

struct ModelProblem {
  ModelProblemCode code{};
  ModelSeverity severity = ModelSeverity::kError;
  std::optional<std::uint64_t> offset;  ///< byte of the file; none when the file can't be read
  std::string place;  ///< record path such as "groups[0].batches[2].vertexIndices[7]"
  std::string text;   ///< what is wrong, with the value and the limit; one printable line
};

/// "offset 123: groups[0].batches[2].vertexIndices[7]: TEXT", without what the problem does not
/// have.
std::string ToLine(const ModelProblem& problem);

}  // namespace mapexport
