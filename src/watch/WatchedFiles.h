// Notices changes of files by looking at them; the system says when to look.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <set>
#include <string>

#include <sys/types.h>

#include "system/Descriptor.h"

namespace mapexport {

/// What differs between two contents of a file, or between a file and none.
struct FileState {
  bool exists = false;
  dev_t device = 0;
  ino_t inode = 0;
  mode_t mode = 0;
  off_t size = 0;
  std::int64_t changed = 0;  ///< when its content was written last, in nanoseconds
  std::int64_t placed = 0;   ///< when it was written, moved or its rights were changed

  friend bool operator==(const FileState&, const FileState&) = default;
};

/// Of the file at the end of links.
FileState StateOf(const std::string& path);

/// The time that a file gets which is written now.
std::int64_t FileTimeNow();

/// The names of the regular files in a folder; none when it can't be read.
std::set<std::string> FilesIn(const std::string& folder);

/// Wakes its owner when something changes in the folders of files. Editors that replace files, and
/// files that do not exist yet, are why folders are watched.
class FolderAlarm {
 public:
  /// Watches the folders of these paths, and of the files that links there lead to. Folders that
  /// don't exist are left out. Throws RunError when the system watches no more folders.
  explicit FolderAlarm(const std::set<std::string>& paths);

  /// Readable once something has changed.
  int Get() const { return events_.Get(); }
  /// Makes it quiet until the next change.
  void Reset() const;

 private:
  void Watch(const std::string& folder) const;

  Descriptor events_;
};

}  // namespace mapexport
