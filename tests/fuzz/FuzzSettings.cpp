// Any bytes as a settings file: a value that is merged into one must be there when it is read
// again.

#include <cstdint>
#include <cstdlib>
#include <string>

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
      if (value == nullptr || *value != *changes.Find(kKey, name)) abort();
    }
  } catch (const SettingsError&) {
  }
  return 0;
}
