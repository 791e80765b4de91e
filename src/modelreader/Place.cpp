#include "modelreader/Place.h"

namespace mapexport {

std::string Place::Path() const {
  std::string path = parent_ == nullptr ? "" : parent_->Path() + '.';
  path += field_;
  if (index_) path += '[' + std::to_string(*index_) + ']';
  return path;
}

std::string Place::Kind() const {
  std::string kind = parent_ == nullptr ? "" : parent_->Kind() + '.';
  kind += field_;
  if (index_) kind += "[]";
  return kind;
}

}  // namespace mapexport
