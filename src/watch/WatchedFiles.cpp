#include "watch/WatchedFiles.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include "system/FileIdentity.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

std::int64_t Nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

FileState StateOf(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return {};
  return {true,
          info.st_dev,
          info.st_ino,
          info.st_mode,
          info.st_size,
          Nanoseconds(info.st_mtim),
          Nanoseconds(info.st_ctim)};
}

std::int64_t FileTimeNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);  // the clock of file systems
  return Nanoseconds(now);
}

std::set<std::string> FilesIn(const std::string& folder) {
  std::set<std::string> names;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code unknown;
    if (entry->is_regular_file(unknown)) names.insert(entry->path().filename().string());
  }
  return names;
}

FolderAlarm::FolderAlarm(const std::set<std::string>& paths)
    : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  if (!events_.IsOpen()) throw RunError("no file can be watched: " + ErrnoText(errno));
  for (const std::string& path : paths) {
    Watch(FolderOf(path));
    if (const auto end = FollowLinks(path); end && *end != path) Watch(FolderOf(*end));
  }
}

void FolderAlarm::Watch(const std::string& folder) const {
  // Not IN_MODIFY: a file that is being written is looked at once it is closed.
  constexpr std::uint32_t kEvents = IN_CLOSE_WRITE | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM |
                                    IN_DELETE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF;
  if (inotify_add_watch(events_.Get(), folder.c_str(), kEvents) >= 0) return;
  if (errno != ENOSPC && errno != ENOMEM) return;  // its owner looks from time to time
  throw RunError(fmt::format("{}: the folder can't be watched: {}", folder,
                             errno == ENOSPC ? "the user's limit, fs.inotify.max_user_watches, is "
                                               "reached"
                                             : ErrnoText(errno)));
}

void FolderAlarm::Reset() const {
  // What has happened is found by looking at the files, so the events themselves don't matter.
  std::array<char, 4096> events;
  while (read(events_.Get(), events.data(), events.size()) > 0) {
  }
}

}  // namespace mapexport
