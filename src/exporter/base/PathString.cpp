#include "exporter/base/PathString.h"

#include <cstring>
#include <string>

namespace mapexport {

PathString::PathString(std::string_view text) {
  if (text.empty()) return;
  capacity_ = text.size() + 1;
  buffer_ = std::make_unique<char[]>(capacity_);
  std::memcpy(buffer_.get(), text.data(), text.size());
}

PathString PathString::Extension() const {
  const std::size_t dot = View().rfind('.');
  return dot == std::string_view::npos ? PathString() : PathString(View().substr(dot + 1));
}

void PathString::LowerCase() {
  for (std::size_t i = 0; i < Length(); ++i) {
    char& c = buffer_[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
}

PathString operator+(const PathString& a, std::string_view b) {
  return PathString(std::string(a.View()).append(b));
}

}  // namespace mapexport
