#include "settings/RegistryChanges.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <variant>

#include <fmt/format.h>

namespace mapexport {
namespace {

/// Bytes that replace those from `begin` to `end`; an insertion when the two are equal.
struct Edit {
  std::size_t begin;
  std::size_t end;
  std::string bytes;
};

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '\\' || c == '"') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string HexText(std::string_view text) {
  std::string hex = "hex(1):";
  for (const char c : text) {
    fmt::format_to(std::back_inserter(hex), "{:02x},", static_cast<unsigned char>(c));
  }
  return hex + "00";
}

std::string Written(const RegistryValue& value) {
  if (const auto* number = std::get_if<std::uint32_t>(&value)) {
    return fmt::format("dword:{:08x}", *number);
  }
  const auto& text = std::get<std::string>(value);
  // Quotes can hold the same texts as names can. The form has no other escapes, so other texts are
  // written as bytes.
  return IsRegistryName(text) ? Quoted(text) : HexText(text);
}

std::string Line(std::string_view name, std::string_view written, std::string_view lineEnd) {
  return fmt::format("{}={}{}", name.empty() ? "@" : Quoted(name), written, lineEnd);
}

/// `bytes` with the edits applied, which must not overlap. An insertion begins a line: a last line
/// without a line end gets one.
std::string Apply(std::string_view bytes, std::vector<Edit> edits, const std::string& lineEnd) {
  std::ranges::stable_sort(edits, {}, &Edit::begin);
  std::string result;
  std::size_t done = 0;
  for (const Edit& edit : edits) {
    result += bytes.substr(done, edit.begin - done);
    done = edit.end;
    const bool inserts = edit.begin == edit.end;
    if (inserts && !result.empty() && result.back() != '\n') result += lineEnd;
    result += edit.bytes;
  }
  result += bytes.substr(done);
  return result;
}

}  // namespace

void RegistryChanges::Set(std::string_view key, std::string_view name, RegistryValue value) {
  const auto [place, isNew] =
      places_.try_emplace({FoldRegistryName(key), FoldRegistryName(name)}, changes_.size());
  if (isNew) {
    changes_.push_back({std::string(key), std::string(name), std::move(value)});
  } else {
    changes_[place->second].value = std::move(value);
  }
}

const RegistryValue* RegistryChanges::Find(std::string_view key, std::string_view name) const {
  const auto place = places_.find({FoldRegistryName(key), FoldRegistryName(name)});
  return place == places_.end() ? nullptr : &changes_[place->second].value;
}

std::string RegistryChanges::MergedInto(const RegistryText& text) const {
  const std::string& lineEnd = text.lineEnd;
  std::vector<Edit> edits;
  std::vector<std::string> newKeys;
  std::map<std::string, std::size_t, std::less<>> newKeyPlaces;
  for (const RegistryChange& change : changes_) {
    const std::string written = Written(change.value);
    const std::string folded = FoldRegistryName(change.key);
    if (const auto key = text.keys.find(folded); key != text.keys.end()) {
      const auto entry = key->second.entries.find(FoldRegistryName(change.name));
      if (entry == key->second.entries.end()) {
        const std::size_t at = key->second.insertAt;
        edits.push_back({at, at, Line(change.name, written, lineEnd)});
      } else if (entry->second.value != change.value) {
        edits.push_back({entry->second.begin, entry->second.end, written});
      }
      continue;
    }
    const auto [place, isNew] = newKeyPlaces.try_emplace(folded, newKeys.size());
    if (isNew) newKeys.push_back(fmt::format("{}[{}]{}", lineEnd, change.key, lineEnd));
    newKeys[place->second] += Line(change.name, written, lineEnd);
  }
  const std::size_t end = text.bytes.size();
  if (text.bytes.empty() && !newKeys.empty()) edits.push_back({end, end, "REGEDIT4" + lineEnd});
  for (std::string& key : newKeys) edits.push_back({end, end, std::move(key)});
  return Apply(text.bytes, std::move(edits), lineEnd);
}

}  // namespace mapexport
