#include "modelreader/ModelProblem.h"

namespace mapexport {

std::string ToLine(const ModelProblem& problem) {
  std::string line;
  if (problem.offset) line += "offset " + std::to_string(*problem.offset) + ": ";
  if (!problem.place.empty()) line += problem.place + ": ";
  return line + problem.text;
}

}  // namespace mapexport
