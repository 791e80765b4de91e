// Tells scene files by their names.
#include <algorithm>
#include <string_view>

#include "scene/SceneFile.h"

namespace mapexport {

bool IsSceneFile(const std::string& path) {
  constexpr std::string_view kExtension = ".scene.json";
  const auto sameLetter = [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
  };
  return path.size() >= kExtension.size() &&
         std::equal(path.end() - static_cast<std::ptrdiff_t>(kExtension.size()), path.end(),
                    kExtension.begin(), sameLetter);
}

}  // namespace mapexport
