#include "host/CStr.h"

#include <algorithm>

namespace mapexport {

void CStr::toLower() {
  for (char& c : text_) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
}

int CStr::first(char c) const {
  const auto at = text_.find(c);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CStr::last(char c) const {
  const auto at = text_.rfind(c);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

CStr CStr::Substr(int start, int count) const {
  start = std::clamp(start, 0, Length());
  count = std::clamp(count, 0, Length() - start);
  return CStr(std::string_view(text_).substr(static_cast<std::size_t>(start),
                                             static_cast<std::size_t>(count)));
}

void CStr::remove(int start) {
  remove(start, Length());
}

void CStr::remove(int start, int count) {
  start = std::clamp(start, 0, Length());
  count = std::clamp(count, 0, Length() - start);
  text_.erase(static_cast<std::size_t>(start), static_cast<std::size_t>(count));
}

}  // namespace mapexport
