// The place of a value in a JSON document.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mapexport {

/// A place such as `root.children[2].mesh.faces[17]`. It is a chain of links, so that no text is
/// made until a message needs it. A link refers to its parent and to the member's name, which must
/// outlive it.
class JsonPlace {
 public:
  /// The document itself.
  JsonPlace() = default;
  JsonPlace(const JsonPlace& parent, std::string_view member) : parent_(&parent), member_(member) {}
  JsonPlace(const JsonPlace& parent, std::size_t element) : parent_(&parent), element_(element) {}
  JsonPlace(const JsonPlace&& parent, std::string_view member) = delete;
  JsonPlace(const JsonPlace&& parent, std::size_t element) = delete;

  /// The place as text, empty for the document itself. A very long one is shortened in the middle.
  std::string ToString() const;

 private:
  const JsonPlace* parent_ = nullptr;
  std::string_view member_;  // empty: an element
  std::size_t element_ = 0;
};

}  // namespace mapexport
