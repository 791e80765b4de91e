// The values that were set and wait to be written, and their merging into a registry text.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "settings/RegistryText.h"

namespace mapexport {

class RegistryChanges {
 public:
  /// Remembers the value; it takes the place of an earlier one of the same key and name. Both must
  /// be registry names (IsRegistryName), and the key must hold no "]".
  void Set(std::string_view key, std::string_view name, RegistryValue value);
  /// The value that was set under the key and name, null when none was.
  const RegistryValue* Find(std::string_view key, std::string_view name) const;
  bool Empty() const { return changes_.empty(); }
  /// The bytes of `text` with the values in them. What a value consists of is exchanged where it
  /// stands; new values come behind the last one of their key, new keys at the end, both in the
  /// order in which they were first set. Every other byte stays. New lines end as the first line of
  /// the text does.
  std::string MergedInto(const RegistryText& text) const;

 private:
  struct Change {
    std::string key;
    std::string name;
    RegistryValue value;
  };
  std::vector<Change> changes_;
  /// Where in changes_ each is, by folded key and name.
  std::map<std::pair<std::string, std::string>, std::size_t> places_;
};

}  // namespace mapexport
