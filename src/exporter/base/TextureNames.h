// The names of the transparent textures.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace mapexport {

/// Texture names in the order in which they were read, duplicates kept; the search takes constant
/// time. A duplicate costs no second copy of its text.
class TextureNames {
 public:
  TextureNames() = default;
  ~TextureNames() = default;
  TextureNames(const TextureNames&) = delete;
  TextureNames& operator=(const TextureNames&) = delete;

  std::size_t Count() const { return names_.size(); }
  /// Name `i`, valid until Clear.
  std::string_view operator[](std::size_t i) const { return *names_[i]; }
  void Append(std::string_view name) { names_.push_back(&*texts_.emplace(name).first); }
  void Clear() {
    names_.clear();
    texts_.clear();
  }
  /// Whether some entry is exactly `name`.
  bool Contains(std::string_view name) const { return texts_.contains(std::string(name)); }

 private:
  std::vector<const std::string*> names_;  ///< into texts_, whose elements never move
  std::unordered_set<std::string> texts_;
};

}  // namespace mapexport
