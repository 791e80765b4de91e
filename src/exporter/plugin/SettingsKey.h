// Access to the exporter's values in the settings registry.
#pragma once

#include <cstdint>

#include "host/CStr.h"
#include "host/System.h"

namespace mapexport {

/// Reads and writes values below a root key. A float is stored as "%f" text, a bool as "TRUE" or
/// "FALSE". Every operation opens the key `path` by itself, creating it when missing, and closes it
/// again. An exception of the registry leaves the operation.
///
/// Reading returns false and leaves `value` alone when the key can't be opened. A missing value (or
/// one of more than 256 bytes of text) is replaced by `fallback`: stored, and taken when the store
/// succeeded. The key is opened for query alone, so a registry that enforces access rights refuses
/// the store: `value` stays, and the result is false.
class SettingsKey {
 public:
  explicit SettingsKey(RegistryRoot root) : root_(root) {}

  bool ReadText(const char* path, const char* name, CStr& value, const char* fallback) const;
  bool WriteText(const char* path, const char* name, const char* value) const;
  bool ReadNumber(const char* path, const char* name, std::int32_t& value,
                  std::int32_t fallback) const;
  bool WriteNumber(const char* path, const char* name, std::int32_t value) const;
  /// The number that LeadingNumber finds in the text; 0 when there is none.
  bool ReadFloat(const char* path, const char* name, float& value, float fallback) const;
  bool WriteFloat(const char* path, const char* name, float value) const;
  /// TRUE and FALSE in any case; any other text leaves `value` alone, and the result is true.
  bool ReadBool(const char* path, const char* name, bool& value, bool fallback) const;
  bool WriteBool(const char* path, const char* name, bool value) const;

 private:
  RegistryRoot root_;
};

}  // namespace mapexport
