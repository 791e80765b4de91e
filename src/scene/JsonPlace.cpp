// Shows a JsonPlace.
#include "scene/JsonPlace.h"

#include <vector>

#include "system/PrintableText.h"

namespace mapexport {

namespace {

// Enough for any scene a person looks at; 1,000 levels of children would fill a screen.
constexpr std::size_t kMostShown = 24;
constexpr std::size_t kShownAtAnEnd = 8;

}  // namespace

std::string JsonPlace::ToString() const {
  std::vector<const JsonPlace*> links;
  for (const JsonPlace* link = this; link->parent_ != nullptr; link = link->parent_) {
    links.push_back(link);
  }
  std::string text;
  for (std::size_t left = links.size(); left > 0; --left) {
    if (links.size() > kMostShown && left == links.size() - kShownAtAnEnd) {
      text += " ... ";
      left = kShownAtAnEnd;
    }
    const JsonPlace& link = *links[left - 1];
    if (link.member_.empty()) {
      text += '[' + std::to_string(link.element_) + ']';
    } else {
      if (!text.empty()) text += '.';
      text += PrintableText(link.member_);
    }
  }
  return text;
}

}  // namespace mapexport
