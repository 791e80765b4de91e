// Shows a JsonPlace.
#include "scene/JsonPlace.h"

#include <vector>

namespace mapexport {

namespace {

// Enough for any scene a person looks at; 1,000 levels of children would fill a screen.
constexpr std::size_t kLongestPlace = 240;
constexpr std::size_t kShownEnd = 80;

}  // namespace

std::string JsonPlace::ToString() const {
  std::vector<const JsonPlace*> links;
  for (const JsonPlace* link = this; link->parent_ != nullptr; link = link->parent_) {
    links.push_back(link);
  }
  std::string text;
  for (auto link = links.rbegin(); link != links.rend(); ++link) {
    if ((*link)->member_.empty()) {
      text += '[' + std::to_string((*link)->element_) + ']';
    } else {
      if (!text.empty()) text += '.';
      text += (*link)->member_;
    }
  }
  if (text.size() <= kLongestPlace) return text;
  const std::size_t headEnd = text.rfind('.', kShownEnd);
  const std::size_t tailStart = text.find('.', text.size() - kShownEnd);
  return text.substr(0, headEnd) + " ... " + text.substr(tailStart);
}

}  // namespace mapexport
