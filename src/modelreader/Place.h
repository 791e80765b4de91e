// A place inside a model file: a record path whose text is made only when it is needed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

/// A field of a record, or an entry of a list. A place refers to its parent, which must outlive it.
class Place {
 public:
  /// A field of the file itself.
  explicit Place(std::string_view field) : field_(field) {}
  /// A field of the record at `parent`.
  Place(const Place& parent, std::string_view field) : parent_(&parent), field_(field) {}

  /// Entry `index` of the list that this place names.
  Place At(std::uint64_t index) const {
    Place entry = *this;
    entry.index_ = index;
    return entry;
  }

  /// "groups[0].batches[2].material"; empty for the file as a whole.
  std::string Path() const {
    std::string path = parent_ == nullptr ? "" : parent_->Path() + '.';
    path += field_;
    if (index_) path += '[' + std::to_string(*index_) + ']';
    return path;
  }
  /// The path without its indices: places of one kind have the same.
  std::string Kind() const {
    std::string kind = parent_ == nullptr ? "" : parent_->Kind() + '.';
    kind += field_;
    if (index_) kind += "[]";
    return kind;
  }

 private:
  const Place* parent_ = nullptr;
  std::string_view field_;
  std::optional<std::uint64_t> index_;
};

}  // namespace mapexport
