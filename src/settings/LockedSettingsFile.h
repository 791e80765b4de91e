// A settings file held by a lock while it is read, changed and replaced.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "system/Descriptor.h"
#include "system/HoldInterrupts.h"

namespace mapexport {

/// The lock is an advisory one (flock) on the file itself, so it leaves nothing behind and works on
/// network file systems, which can't lock folders. Since the file is replaced while it is locked, a
/// process that gets the lock checks that the path still leads to the file that it locked. While
/// the lock is held, SIGINT, SIGTERM and SIGHUP wait, so they leave no temporary file behind; one
/// that a killed process left is replaced.
class LockedSettingsFile {
 public:
  /// Opens the file at `path` for reading and writing and locks it. A missing file is created
  /// empty, and so are the folders above it (mode 0700). Throws SettingsError, also when another
  /// process does not release the lock within `patience`.
  LockedSettingsFile(const std::string& path, std::chrono::milliseconds patience);
  LockedSettingsFile(const LockedSettingsFile&) = delete;
  LockedSettingsFile& operator=(const LockedSettingsFile&) = delete;
  /// Unlocks the file; removes it if it was created here and nothing was written.
  ~LockedSettingsFile();

  /// The file's bytes. Throws SettingsError. To be called once.
  std::string Read();

  /// Replaces the file by one with these bytes: a reader sees the old file or the new one, also
  /// after a crash. The new file keeps the mode, and the owner and extended attributes as far as
  /// possible. A symbolic link stays and leads to the new file. Throws SettingsError and leaves no
  /// temporary file behind. To be called once.
  void Replace(std::string_view bytes);

 private:
  void OpenOrCreate(const std::string& path);
  bool TryLock(const std::string& path);
  void RemoveIfUnused();
  bool LeadsHere(const std::string& path);

  std::optional<HoldInterrupts> hold_;  ///< except while waiting for the lock
  Descriptor file_;
  std::string realPath_;  ///< the path without symbolic links
  bool madeHere_ = false;
};

}  // namespace mapexport
