#include "cli/ModelOptions.h"

#include "cli/OptionReading.h"

namespace mapexport {

std::optional<ModelLayout> LayoutValue(const CommandLine& line) {
  const auto word = WordValue(line, kLayoutOption);
  if (!word) return std::nullopt;
  return *word == 0 ? ModelLayout::kQob : ModelLayout::kKob;
}

}  // namespace mapexport
