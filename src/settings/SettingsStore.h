// The settings registry, kept in a text file of the registry-export form.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/System.h"

namespace mapexport {

/// Keys and values of the registry. Reads are answered from what the file held when the store was
/// opened and from what was set since; what is set waits in memory until Save. The form of the file
/// is described in settings/RegistryText.h; key classes have no place in it. One thread at a time
/// uses a store.
class SettingsStore {
 public:
  /// A store that begins empty and is never written.
  static SettingsStore InMemory();
  /// The store in the file at `path`. A file that does not exist yet, or has no bytes, is a store
  /// that holds nothing yet. A file that is not of the form, is no regular file, is longer than 16
  /// MiB or can't be read leaves a store whose keys can't be opened (kRegAccessDenied) and which
  /// Save never writes; Warning() then says so in one line. So does an empty path.
  static SettingsStore Open(const std::string& path);
  /// "$XDG_CONFIG_HOME/mapexport/settings.reg", else "$HOME/.config/mapexport/settings.reg"; a
  /// variable that holds no absolute path is passed over. Empty when neither is of use.
  static std::string DefaultPath();

  SettingsStore(const SettingsStore&) = delete;
  SettingsStore& operator=(const SettingsStore&) = delete;
  SettingsStore(SettingsStore&&) noexcept;
  SettingsStore& operator=(SettingsStore&&) noexcept;
  ~SettingsStore();

  // The registry operations of System, with the same results. A key or value name that the file
  // could not hold (one that is not UTF-8 or has line ends; for keys also "]" and empty parts) and
  // a size that the type can't have are kRegInvalidParameter.

  /// A missing key comes into being in memory; the file gets it with its first value.
  LSTATUS CreateKey(RegistryRoot root, const char* path, const char* keyClass,
                    RegistryAccess access, HKEY& key);
  /// `data` may be null, to ask for the size alone. When the buffer is too small it is left as it
  /// is, and `size` receives what is needed. An empty or null name asks for the key's value without
  /// a name.
  LSTATUS QueryValue(HKEY key, const char* name, RegistryType type, void* data,
                     std::uint32_t& size);
  /// A text ends at its first NUL, or after `size` bytes; it may be any bytes. A number has 4
  /// bytes.
  LSTATUS SetValue(HKEY key, const char* name, RegistryType type, const void* data,
                   std::uint32_t size);
  /// Does nothing for a key that is not open.
  void CloseKey(HKEY key);

  /// Writes the values that were set since Open, or since the last Save that succeeded, into the
  /// file. The file is locked (for up to 5 seconds this waits for others) and read again, so that
  /// all that is there by then survives byte for byte, and replaced atomically; it keeps its mode,
  /// symbolic links are followed, and missing folders are made. When nothing was set or
  /// nothing would change, the file is not even opened for writing. Returns one line saying what
  /// went wrong, want of memory included, the file then being as it was, or an empty text. Throws
  /// nothing: values that could not be saved wait for the next Save.
  std::string Save() noexcept;

  /// One line saying what was wrong with the file when the store was opened, empty when nothing
  /// was.
  const std::string& Warning() const;

 private:
  struct Content;
  explicit SettingsStore(std::unique_ptr<Content> content);
  std::unique_ptr<Content> content_;
};

}  // namespace mapexport
