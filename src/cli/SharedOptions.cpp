#include "cli/SharedOptions.h"

#include "cli/OptionReading.h"

namespace mapexport {

SceneSource SceneOf(const CommandLine& line) {
  SceneSource scene;
  scene.path = PositionalPath(line, 0);
  if (const auto up = WordValue(line, kUpOption)) scene.import.up = static_cast<UpAxis>(*up);
  scene.import.scale = ScaleValue(line);
  scene.import.skipHidden = WordValue(line, kHiddenOption) == 1;
  scene.keywords = PathValue(line, kKeywordsOption.name);
  scene.oneSided = line.Has(kOneSidedOption.name);
  scene.seconds = WholeValue(line, kReadLimitOption.name);
  return scene;
}

std::optional<ModelLayout> LayoutValue(const CommandLine& line) {
  const auto word = WordValue(line, kLayoutOption);
  if (!word) return std::nullopt;
  return *word == 0 ? ModelLayout::kQob : ModelLayout::kKob;
}

}  // namespace mapexport
