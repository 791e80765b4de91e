#include "app/export/ExportSettings.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "system/RunError.h"

namespace mapexport {
namespace {

// The registry value in which the exporter remembers its database.
constexpr const char* kExporterKey = R"(Software\Corvantis\Talvern\Exporter)";
constexpr const char* kCxpValue = "CXP Filename";

}  // namespace

std::string SettingsPath(const ExportArguments& arguments) {
  if (arguments.fresh) return {};
  return arguments.settings.value_or(SettingsStore::DefaultPath());
}

SettingsStore OpenSettings(const ExportArguments& arguments, Messages& messages) {
  if (arguments.fresh) return SettingsStore::InMemory();
  const std::string path = SettingsPath(arguments);
  if (path.empty()) {
    messages.Warning(
        "settings-not-remembered",
        "neither XDG_CONFIG_HOME nor HOME names a folder: the settings are not remembered");
    return SettingsStore::InMemory();
  }
  std::error_code unknown;
  if (std::filesystem::is_other(std::filesystem::status(path, unknown))) {
    throw RunError(fmt::format("{}: the settings file is not a regular file", path));
  }
  SettingsStore settings = SettingsStore::Open(path);
  if (!settings.Warning().empty()) {
    messages.Warning("settings-unreadable", settings.Warning());
  }
  return settings;
}

void SaveSettings(SettingsStore& settings, Messages& messages) {
  const std::string error = settings.Save();
  if (!error.empty()) messages.Warning("settings-not-saved", error);
}

void SaveSettings(const SettingsStore& settings, const std::vector<RegistryChange>& changes,
                  Messages& messages) {
  const std::string error = settings.SaveChanges(changes);
  if (!error.empty()) messages.Warning("settings-not-saved", error);
}

std::string RememberedCxp(SettingsStore& settings) {
  HKEY key = nullptr;
  if (settings.CreateKey(RegistryRoot::kLocalMachine, kExporterKey, nullptr, RegistryAccess::kQuery,
                         key) != kRegSuccess) {
    return {};
  }
  // As large as the exporter's buffer; a text that does not fit counts as none.
  std::array<char, 256> text{};
  auto size = static_cast<std::uint32_t>(text.size());
  const LSTATUS status =
      settings.QueryValue(key, kCxpValue, RegistryType::kText, text.data(), size);
  settings.CloseKey(key);
  return status == kRegSuccess ? text.data() : std::string();
}

}  // namespace mapexport
