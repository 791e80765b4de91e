#include "plugin/SettingsKey.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "plugin/state/NumberText.h"

namespace mapexport {
namespace {

constexpr const char* kKeyClass = "Talvern Values";

/// An open key; null when it could not be opened.
class OpenKey {
 public:
  OpenKey(RegistryRoot root, const char* path, RegistryAccess access) {
    if (TheSystem().RegCreateKeyEx(root, path, kKeyClass, access, key_) != kRegSuccess) {
      key_ = nullptr;
    }
  }
  ~OpenKey() {
    if (key_ != nullptr) TheSystem().RegCloseKey(key_);
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  explicit operator bool() const { return key_ != nullptr; }

  bool QueryText(const char* name, CStr& text) const {
    std::array<char, 257> buffer{};  // 256 bytes of text, and a NUL whatever was stored
    std::uint32_t size = 256;
    if (TheSystem().RegQueryValueEx(key_, name, RegistryType::kText, buffer.data(), size) !=
        kRegSuccess) {
      return false;
    }
    text = buffer.data();
    return true;
  }
  bool SetText(const char* name, const char* text) const {
    return TheSystem().RegSetValueEx(key_, name, RegistryType::kText, text,
                                     static_cast<std::uint32_t>(std::strlen(text) + 1)) ==
           kRegSuccess;
  }
  bool QueryNumber(const char* name, std::int32_t& number) const {
    std::int32_t stored = 0;
    std::uint32_t size = sizeof stored;
    if (TheSystem().RegQueryValueEx(key_, name, RegistryType::kNumber, &stored, size) !=
        kRegSuccess) {
      return false;
    }
    number = stored;
    return true;
  }
  bool SetNumber(const char* name, std::int32_t number) const {
    return TheSystem().RegSetValueEx(key_, name, RegistryType::kNumber, &number, sizeof number) ==
           kRegSuccess;
  }

 private:
  HKEY key_ = nullptr;
};

const char* BoolText(bool value) {
  return value ? "TRUE" : "FALSE";
}

std::string UpperCase(const CStr& text) {
  std::string upper(text.View());
  std::ranges::transform(upper, upper.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return upper;
}

}  // namespace

bool SettingsKey::ReadText(const char* path, const char* name, CStr& value,
                           const char* fallback) const {
  const OpenKey key(root_, path, RegistryAccess::kQuery);
  if (!key) return false;
  if (key.QueryText(name, value)) return true;
  if (!key.SetText(name, fallback)) return false;
  value = fallback;
  return true;
}

bool SettingsKey::WriteText(const char* path, const char* name, const char* value) const {
  const OpenKey key(root_, path, RegistryAccess::kSet);
  return key && key.SetText(name, value);
}

bool SettingsKey::ReadNumber(const char* path, const char* name, std::int32_t& value,
                             std::int32_t fallback) const {
  const OpenKey key(root_, path, RegistryAccess::kQuery);
  if (!key) return false;
  if (key.QueryNumber(name, value)) return true;
  if (!key.SetNumber(name, fallback)) return false;
  value = fallback;
  return true;
}

bool SettingsKey::WriteNumber(const char* path, const char* name, std::int32_t value) const {
  const OpenKey key(root_, path, RegistryAccess::kSet);
  return key && key.SetNumber(name, value);
}

bool SettingsKey::ReadFloat(const char* path, const char* name, float& value,
                            float fallback) const {
  CStr text;
  const OpenKey key(root_, path, RegistryAccess::kQuery);
  if (!key) return false;
  if (key.QueryText(name, text)) {
    value = static_cast<float>(LeadingNumber(text.data()));
    return true;
  }
  if (!key.SetText(name, FormatFloat(fallback).c_str())) return false;
  value = fallback;
  return true;
}

bool SettingsKey::WriteFloat(const char* path, const char* name, float value) const {
  return WriteText(path, name, FormatFloat(value).c_str());
}

bool SettingsKey::ReadBool(const char* path, const char* name, bool& value, bool fallback) const {
  CStr text;
  const OpenKey key(root_, path, RegistryAccess::kQuery);
  if (!key) return false;
  if (key.QueryText(name, text)) {
    const std::string upper = UpperCase(text);
    if (upper == "TRUE") value = true;
    if (upper == "FALSE") value = false;
    return true;
  }
  if (!key.SetText(name, BoolText(fallback))) return false;
  value = fallback;
  return true;
}

bool SettingsKey::WriteBool(const char* path, const char* name, bool value) const {
  return WriteText(path, name, BoolText(value));
}

}  // namespace mapexport
