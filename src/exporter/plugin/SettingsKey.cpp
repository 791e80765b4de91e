#include "exporter/plugin/SettingsKey.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "exporter/base/NumberText.h"

namespace mapexport {
namespace {

constexpr const char* kKeyClass = "Talvern Values";

/// The values of an open key.
class OpenKey {
 public:
  explicit OpenKey(HKEY key) : key_(key) {}

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
  HKEY key_;
};

/// Opens a key, lets `use` work with it and closes it again. The result is that of `use`, false
/// when the key can't be opened.
template <typename Use>
bool WithKey(RegistryRoot root, const char* path, RegistryAccess access, const Use& use) {
  HKEY key = nullptr;
  if (TheSystem().RegCreateKeyEx(root, path, kKeyClass, access, key) != kRegSuccess ||
      key == nullptr) {
    return false;
  }
  // No destructor closes it: closing may throw as any call of the system may.
  bool result = false;
  try {
    result = use(OpenKey(key));
  } catch (...) {
    try {
      TheSystem().RegCloseKey(key);
    } catch (...) {
      // The first exception is the one to report.
    }
    throw;
  }
  TheSystem().RegCloseKey(key);
  return result;
}

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
  return WithKey(root_, path, RegistryAccess::kQuery, [&](const OpenKey& key) {
    if (key.QueryText(name, value)) return true;
    if (!key.SetText(name, fallback)) return false;
    value = fallback;
    return true;
  });
}

bool SettingsKey::WriteText(const char* path, const char* name, const char* value) const {
  return WithKey(root_, path, RegistryAccess::kSet,
                 [&](const OpenKey& key) { return key.SetText(name, value); });
}

bool SettingsKey::ReadNumber(const char* path, const char* name, std::int32_t& value,
                             std::int32_t fallback) const {
  return WithKey(root_, path, RegistryAccess::kQuery, [&](const OpenKey& key) {
    if (key.QueryNumber(name, value)) return true;
    if (!key.SetNumber(name, fallback)) return false;
    value = fallback;
    return true;
  });
}

bool SettingsKey::WriteNumber(const char* path, const char* name, std::int32_t value) const {
  return WithKey(root_, path, RegistryAccess::kSet,
                 [&](const OpenKey& key) { return key.SetNumber(name, value); });
}

bool SettingsKey::ReadFloat(const char* path, const char* name, float& value,
                            float fallback) const {
  return WithKey(root_, path, RegistryAccess::kQuery, [&](const OpenKey& key) {
    CStr text;
    if (key.QueryText(name, text)) {
      value = static_cast<float>(LeadingNumber(text.data()));
      return true;
    }
    if (!key.SetText(name, FormatFloat(fallback).c_str())) return false;
    value = fallback;
    return true;
  });
}

bool SettingsKey::WriteFloat(const char* path, const char* name, float value) const {
  return WriteText(path, name, FormatFloat(value).c_str());
}

bool SettingsKey::ReadBool(const char* path, const char* name, bool& value, bool fallback) const {
  return WithKey(root_, path, RegistryAccess::kQuery, [&](const OpenKey& key) {
    CStr text;
    if (key.QueryText(name, text)) {
      const std::string upper = UpperCase(text);
      if (upper == "TRUE") value = true;
      if (upper == "FALSE") value = false;
      return true;
    }
    if (!key.SetText(name, BoolText(fallback))) return false;
    value = fallback;
    return true;
  });
}

bool SettingsKey::WriteBool(const char* path, const char* name, bool value) const {
  return WriteText(path, name, BoolText(value));
}

}  // namespace mapexport
