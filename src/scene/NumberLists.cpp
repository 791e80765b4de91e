// Finds the lists by the names of their members: strings are passed one by one, so that a name
// within a text is none.
#include "scene/NumberLists.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "scene/ParseNumberList.h"

namespace mapexport {

namespace {

constexpr std::string_view kEmptyArray = "[]";

// The quote that ends the string whose text starts at `at`; `end` when there is none.
const char* EndOfString(const char* at, const char* end) {
  for (; at < end && *at != '"'; ++at) {
    if (*at == '\\') ++at;
  }
  return std::min(at, end);
}

const char* PassSpace(const char* at) {
  while (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t') ++at;
  return at;
}

// The array that is the value of a member whose name ended before `at`; null when it is none.
const char* FindArray(const char* at) {
  at = PassSpace(at);
  if (*at != ':') return nullptr;
  at = PassSpace(at + 1);
  return *at == '[' ? at : nullptr;
}

// An upper bound of the list's tuples: the brackets before the next quote, which is that of the
// next member's name or the next node. Few of them are not the list's.
template <class Element>
std::size_t CountTuples(const char* list, const char* end) {
  const void* const quote = std::memchr(list, '"', static_cast<std::size_t>(end - list));
  const char* const limit = quote == nullptr ? end : static_cast<const char*>(quote);
  // Many brackets that are no tuples are to cost little.
  constexpr std::ptrdiff_t kMostReserved = (std::ptrdiff_t{64} << 20) / sizeof(Element);
  return static_cast<std::size_t>(
      std::min(std::max<std::ptrdiff_t>(std::count(list, limit, '[') - 1, 0), kMostReserved));
}

}  // namespace

NumberLists::NumberLists(std::string_view text) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const char* copied = begin;
  const char* at = begin;
  const auto take = [&]<class Element>(const char* list, std::vector<Element> elements) {
    elements.reserve(CountTuples<Element>(list, end));
    const char* const behind = ParseNumberList(list, elements);
    if (behind == nullptr) return;
    rest_.append(copied, list);
    cuts_.push_back({rest_.size(), static_cast<std::size_t>(list - begin),
                     static_cast<std::size_t>(behind - begin), std::move(elements)});
    rest_ += kEmptyArray;
    copied = at = behind;
  };
  while (const void* const quote = std::memchr(at, '"', static_cast<std::size_t>(end - at))) {
    const char* const nameBegin = static_cast<const char*>(quote) + 1;
    const char* const nameEnd = EndOfString(nameBegin, end);
    if (nameEnd == end) break;
    at = nameEnd + 1;
    const std::string_view name(nameBegin, nameEnd);
    const bool ofPoints =
        name == "vertices" || name == "textureVertices" || name == "cornerNormals";
    if (!ofPoints && name != "faces" && name != "textureFaces") continue;
    const char* const list = FindArray(at);
    if (list == nullptr) continue;
    if (ofPoints) {
      take(list, std::vector<Point3>());
    } else if (name == "faces") {
      take(list, std::vector<Face>());
    } else {
      take(list, std::vector<TVFace>());
    }
  }
  rest_.append(copied, end);
}

std::size_t NumberLists::OffsetInText(std::size_t offsetInRest) const {
  const auto next = std::ranges::upper_bound(cuts_, offsetInRest, {}, &Cut::inRest);
  if (next == cuts_.begin()) return offsetInRest;
  const Cut& cut = *(next - 1);
  if (offsetInRest == cut.inRest) return cut.begin;
  return offsetInRest - (cut.inRest + kEmptyArray.size()) + cut.end;
}

NumberLists::Cut* NumberLists::CutAt(std::size_t offsetInRest) {
  const auto cut = std::ranges::lower_bound(cuts_, offsetInRest, {}, &Cut::inRest);
  return cut == cuts_.end() || cut->inRest != offsetInRest ? nullptr : &*cut;
}

}  // namespace mapexport
