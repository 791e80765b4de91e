// Any bytes as a settings file: what was in it survives new values.

#include <string>

#include "fuzz/FuzzBytes.h"
#include "settings/RegistryChanges.h"
#include "settings/RegistryText.h"
#include "settings/SettingsError.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace mapexport;
  constexpr const char* kKey = R"(HKEY_LOCAL_MACHINE\Software\Fuzz)";
  try {
    const RegistryText text =
        ParseRegistryText(std::string(reinterpret_cast<const char*>(data), size));
    RegistryChanges changes;
    changes.Set(kKey, "Text", std::string("a \"b\"\\\n\xff"));
    changes.Set(kKey, "Number", std::uint32_t{42});
    const RegistryText merged = ParseRegistryText(changes.MergedInto(text));
    for (const char* name : {"Text", "Number"}) {
      const RegistryValue* value = merged.Find(kKey, name);
      Require(value != nullptr && *value == *changes.Find(kKey, name), "new values are there");
    }
    Require(changes.MergedInto(merged) == merged.bytes, "the same values change nothing");

    for (const auto& [key, content] : text.keys) {
      for (const auto& [name, entry] : content.entries) {
        if (!entry.value || changes.Find(key, name) != nullptr) continue;
        const RegistryValue* kept = merged.Find(key, name);
        Require(kept != nullptr && *kept == *entry.value, "old values survive");
      }
    }
  } catch (const SettingsError&) {
  }
  return 0;
}
