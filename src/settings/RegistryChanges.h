// Values that were set and not yet written, and their merging into a registry text.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "settings/RegistryText.h"

namespace mapexport {

struct RegistryChange {
  std::string key;
  std::string name;
  RegistryValue value;
};

class RegistryChanges {
 public:
  /// Stores the value; it replaces an earlier one with the same key and name. Both must be registry
  /// names (IsRegistryName), and the key must not contain "]".
  void Set(std::string_view key, std::string_view name, RegistryValue value);
  /// The value that was set with that key and name; null for none.
  const RegistryValue* Find(std::string_view key, std::string_view name) const;
  /// In the order in which they were first set.
  const std::vector<RegistryChange>& All() const { return changes_; }
  /// The bytes of `text` with the values merged in. A value's data is replaced in place; new values
  /// follow the last one of their key, new keys come at the end, both in the order in which they
  /// were first set. All other bytes stay. New lines get the line end of the text's first line.
  std::string MergedInto(const RegistryText& text) const;

 private:
  std::vector<RegistryChange> changes_;
  /// Each one's index in changes_, by folded key and name.
  std::map<std::pair<std::string, std::string>, std::size_t> places_;
};

}  // namespace mapexport
