// The settings registry, kept in a text file of the registry-export form.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/System.h"
#include "settings/RegistryChanges.h"

namespace mapexport {

/// Keys and values of the registry. Reads see the file as it was when the store was opened, plus
/// what was set since; set values wait in memory until Save. settings/RegistryText.h describes the
/// form of the file, which has no key classes. A store must be used by one thread at a time.
class SettingsStore {
 public:
  /// A store that is empty at first and is never written.
  static SettingsStore InMemory();
  /// The store in the file at `path`. A file that does not exist or is empty is a store without
  /// values. When the file is not of the form, is not regular, is longer than 16 MiB or can't be
  /// read, keys can't be opened (kRegAccessDenied), Save never writes, and Warning() says why in
  /// one line. So does an empty path.
  static SettingsStore Open(const std::string& path);
  /// "$XDG_CONFIG_HOME/mapexport/settings.reg", else "$HOME/.config/mapexport/settings.reg"; a
  /// variable without an absolute path is ignored. Empty when neither can be used.
  static std::string DefaultPath();

  SettingsStore(const SettingsStore&) = delete;
  SettingsStore& operator=(const SettingsStore&) = delete;
  SettingsStore(SettingsStore&&) noexcept;
  SettingsStore& operator=(SettingsStore&&) noexcept;
  ~SettingsStore();

  // The registry operations of System, with the same results. A key or value name that the file
  // could not hold (not UTF-8, or with line ends; for keys also "]" and empty parts) and a size
  // that the type can't have give kRegInvalidParameter.

  /// A missing key is created in memory; it is in the file once it has a value.
  LSTATUS CreateKey(RegistryRoot root, const char* path, const char* keyClass,
                    RegistryAccess access, HKEY& key);
  /// `data` may be null, to ask only for the size. When the buffer is too small it is unchanged,
  /// and `size` receives the required size. An empty or null name means the key's value without a
  /// name.
  LSTATUS QueryValue(HKEY key, const char* name, RegistryType type, void* data,
                     std::uint32_t& size);
  /// A text ends at its first NUL, or after `size` bytes; it may be any bytes. A number has 4
  /// bytes.
  LSTATUS SetValue(HKEY key, const char* name, RegistryType type, const void* data,
                   std::uint32_t size);
  /// Does nothing for a key that is not open.
  void CloseKey(HKEY key);

  /// Writes the values that were set since Open, or since the last successful Save. The file is
  /// locked (waits up to 5 seconds), read again, so that everything else in it survives byte for
  /// byte, and replaced atomically. It keeps its mode, symbolic links are followed, and missing
  /// folders are created. When nothing would change, the file is not opened for writing. Returns an
  /// empty text, or one line that says what went wrong, running out of memory included; the file is
  /// then as it was. Throws nothing: values that could not be saved wait for the next Save.
  std::string Save() noexcept;

  /// What Save would write, for another process.
  const std::vector<RegistryChange>& Changes() const;
  /// Writes these values, of another process, as Save would write its own. This store stays as it
  /// is.
  std::string SaveChanges(const std::vector<RegistryChange>& changes) const noexcept;

  /// One line that says what was wrong with the file when the store was opened; empty for nothing.
  const std::string& Warning() const;

 private:
  struct Content;
  explicit SettingsStore(std::unique_ptr<Content> content);
  std::unique_ptr<Content> content_;
};

}  // namespace mapexport
