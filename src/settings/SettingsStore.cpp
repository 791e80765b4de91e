#include "settings/SettingsStore.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>

#include <fmt/format.h>

#include "settings/LockedSettingsFile.h"
#include "settings/ReadSettingsFile.h"
#include "settings/RegistryChanges.h"
#include "settings/RegistryText.h"
#include "settings/SettingsError.h"

namespace mapexport {
namespace {

constexpr std::chrono::seconds kLockPatience{5};

struct OpenKey {
  std::string path;
  RegistryAccess access;
};

bool IsKeyPath(std::string_view path) {
  return IsRegistryName(path) && path.find(']') == std::string_view::npos &&
         !path.starts_with('\\') && !path.ends_with('\\') &&
         path.find("\\\\") == std::string_view::npos;
}

std::string_view OrEmpty(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

}  // namespace

struct SettingsStore::Content {
  std::string path;     ///< empty: in memory only
  std::string warning;  ///< not empty: the file must not be read or written
  RegistryText text;
  RegistryChanges changes;
  // Keys' handles are never reused, so a handle that was closed or never issued is not mistaken for
  // an open one.
  std::unordered_map<HKEY, OpenKey> openKeys;
  std::uintptr_t lastHandle = 0;

  /// The open key of a handle; null when there is none or it was opened for other access.
  const OpenKey* FindKey(HKEY handle, RegistryAccess access) const {
    const auto found = openKeys.find(handle);
    return found != openKeys.end() && found->second.access == access ? &found->second : nullptr;
  }

  const RegistryValue* FindValue(std::string_view key, std::string_view name) const {
    if (const RegistryValue* changed = changes.Find(key, name)) return changed;
    return text.Find(key, name);
  }

  /// Merges the changes into the file. Throws and leaves both as they were on failure.
  void WriteChanges();

  std::string NotSaved(const char* reason) const {
    return fmt::format("{}: {}; the settings are not saved", path, reason);
  }
};

void SettingsStore::Content::WriteChanges() {
  // A file that already holds all values is left alone, because it may be read-only.
  RegistryText now = ParseRegistryText(ReadSettingsFile(path).value_or(""));
  if (changes.MergedInto(now) == now.bytes) {
    text = std::move(now);
    changes = {};
    return;
  }
  LockedSettingsFile file(path, kLockPatience);
  const RegistryText before = ParseRegistryText(file.Read());
  std::string bytes = changes.MergedInto(before);
  if (bytes.size() > kMaxSettingsBytes) {
    throw SettingsError(
        fmt::format("the file would become longer than {} bytes", kMaxSettingsBytes));
  }
  RegistryText after = ParseRegistryText(std::move(bytes));
  if (after.bytes != before.bytes) file.Replace(after.bytes);
  text = std::move(after);
  changes = {};
}

SettingsStore::SettingsStore(std::unique_ptr<Content> content) : content_(std::move(content)) {}
SettingsStore::SettingsStore(SettingsStore&&) noexcept = default;
SettingsStore& SettingsStore::operator=(SettingsStore&&) noexcept = default;
SettingsStore::~SettingsStore() = default;

SettingsStore SettingsStore::InMemory() {
  return SettingsStore(std::make_unique<Content>());
}

SettingsStore SettingsStore::Open(const std::string& path) {
  auto content = std::make_unique<Content>();
  content->path = path;
  try {
    if (path.empty()) throw SettingsError("the path of the settings file is empty");
    content->text = ParseRegistryText(ReadSettingsFile(path).value_or(""));
  } catch (const SettingsError& error) {
    content->warning = fmt::format("{}{}{}; settings are neither read nor saved", path,
                                   path.empty() ? "" : ": ", error.what());
  }
  return SettingsStore(std::move(content));
}

std::string SettingsStore::DefaultPath() {
  constexpr std::string_view kFile = "/mapexport/settings.reg";
  const std::string_view configHome = OrEmpty(std::getenv("XDG_CONFIG_HOME"));
  if (configHome.starts_with('/')) return fmt::format("{}{}", configHome, kFile);
  const std::string_view home = OrEmpty(std::getenv("HOME"));
  if (home.starts_with('/')) return fmt::format("{}/.config{}", home, kFile);
  return {};
}

LSTATUS SettingsStore::CreateKey(RegistryRoot root, const char* path, const char* /*keyClass*/,
                                 RegistryAccess access, HKEY& key) {
  key = nullptr;
  if (!content_->warning.empty()) return kRegAccessDenied;
  if (root != RegistryRoot::kLocalMachine || !IsKeyPath(OrEmpty(path))) {
    return kRegInvalidParameter;
  }
  std::string fullPath = "HKEY_LOCAL_MACHINE";
  if (!OrEmpty(path).empty()) fullPath.append("\\").append(path);
  key = reinterpret_cast<HKEY>(++content_->lastHandle);
  content_->openKeys.emplace(key, OpenKey{std::move(fullPath), access});
  return kRegSuccess;
}

LSTATUS SettingsStore::QueryValue(HKEY key, const char* name, RegistryType type, void* data,
                                  std::uint32_t& size) {
  const OpenKey* open = content_->FindKey(key, RegistryAccess::kQuery);
  if (open == nullptr) return kRegAccessDenied;
  const RegistryValue* value = content_->FindValue(open->path, OrEmpty(name));
  if (value == nullptr) return kRegFileNotFound;

  const void* bytes = nullptr;
  std::size_t needed = 0;
  if (const auto* text = std::get_if<std::string>(value); text && type == RegistryType::kText) {
    bytes = text->c_str();
    needed = text->size() + 1;
  } else if (const auto* number = std::get_if<std::uint32_t>(value);
             number && type == RegistryType::kNumber) {
    bytes = number;
    needed = sizeof *number;
  } else {
    return kRegFileNotFound;
  }
  const std::uint32_t available = std::exchange(size, static_cast<std::uint32_t>(needed));
  if (data == nullptr) return kRegSuccess;
  if (available < needed) return kRegMoreData;
  std::memcpy(data, bytes, needed);
  return kRegSuccess;
}

LSTATUS SettingsStore::SetValue(HKEY key, const char* name, RegistryType type, const void* data,
                                std::uint32_t size) {
  const OpenKey* open = content_->FindKey(key, RegistryAccess::kSet);
  if (open == nullptr) return kRegAccessDenied;
  const std::string_view valueName = OrEmpty(name);
  if (!IsRegistryName(valueName) || size > kMaxSettingsBytes || (data == nullptr && size > 0)) {
    return kRegInvalidParameter;
  }
  if (type == RegistryType::kText) {
    const std::string_view text(static_cast<const char*>(data), size);
    content_->changes.Set(open->path, valueName, std::string(text.substr(0, text.find('\0'))));
    return kRegSuccess;
  }
  std::uint32_t number = 0;
  if (type != RegistryType::kNumber || size != sizeof number) return kRegInvalidParameter;
  std::memcpy(&number, data, sizeof number);
  content_->changes.Set(open->path, valueName, number);
  return kRegSuccess;
}

void SettingsStore::CloseKey(HKEY key) {
  content_->openKeys.erase(key);
}

std::string SettingsStore::Save() noexcept {
  if (content_->path.empty() || content_->changes.All().empty()) return {};
  try {
    try {
      content_->WriteChanges();
      return {};
    } catch (const std::bad_alloc&) {
      return content_->NotSaved("memory ran out");
    } catch (const std::exception& error) {
      return content_->NotSaved(error.what());
    }
  } catch (...) {
    return "memory ran out";  // not enough even for the line; this one is short enough to need none
  }
}

const std::vector<RegistryChange>& SettingsStore::Changes() const {
  return content_->changes.All();
}

std::string SettingsStore::SaveChanges(const std::vector<RegistryChange>& changes) const noexcept {
  try {
    SettingsStore other = InMemory();
    other.content_->path = content_->path;
    for (const RegistryChange& change : changes) {
      other.content_->changes.Set(change.key, change.name, change.value);
    }
    return other.Save();
  } catch (...) {
    return "memory ran out";  // nothing else is thrown
  }
}

const std::string& SettingsStore::Warning() const {
  return content_->warning;
}

}  // namespace mapexport
