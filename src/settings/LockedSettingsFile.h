// A settings file held by a lock while it is read, changed and replaced.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "system/Descriptor.h"
#include "system/HoldInterrupts.h"

namespace mapexport {

/// The lock is an advisory one (flock) on the file itself, so that it leaves nothing behind and
/// works on network file systems, which lock no folders. Because the file is replaced while it is
/// locked, who gets the lock looks again whether the path still leads to the file that it locked.
/// While the lock is held, SIGINT, SIGTERM and SIGHUP wait: they leave no temporary file behind,
/// and one that a killed process left is replaced.
class LockedSettingsFile {
 public:
  /// Opens the file at `path` for reading and writing and locks it. A file that is missing is made,
  /// empty, and so are the folders above it (mode 0700). Throws SettingsError, also when another
  /// process does not give the lock back within `patience`.
  LockedSettingsFile(const std::string& path, std::chrono::milliseconds patience);
  LockedSettingsFile(const LockedSettingsFile&) = delete;
  LockedSettingsFile& operator=(const LockedSettingsFile&) = delete;
  /// Unlocks the file; removes it if it was made here and nothing was written.
  ~LockedSettingsFile();

  /// The file's bytes; throws SettingsError. To be called once.
  std::string Read();

  /// Puts a file with these bytes in its place, whole or not at all: whoever reads sees the old
  /// file or the new one, also after a crash. It keeps the file's mode, and its owner and extended
  /// attributes as far as these may be set. A symbolic link stays and leads to the new file. Throws
  /// SettingsError and leaves no temporary file behind. To be called once.
  void Replace(std::string_view bytes);

 private:
  void OpenOrCreate(const std::string& path);
  bool TryLock(const std::string& path);
  void RemoveIfUnused();
  bool LeadsHere(const std::string& path);

  std::optional<HoldInterrupts> hold_;  ///< but while the lock is waited for
  Descriptor file_;
  std::string realPath_;  ///< the path without symbolic links
  bool madeHere_ = false;
};

}  // namespace mapexport
