#include "worker/RestrictFiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "system/Descriptor.h"
#include "system/RunError.h"
#include "worker/ShadowMemory.h"

namespace mapexport {
namespace {

/// The argument of landlock_create_ruleset; the system's header may be older than the kernel.
struct Rules {
  std::uint64_t files;
  std::uint64_t network;
  std::uint64_t scopes;
};

/// The rights that each version of Landlock can forbid, and the size of its Rules.
struct Version {
  unsigned files;
  unsigned network;
  unsigned scopes;
  std::size_t size;
};
constexpr Version kVersions[] = {
    {13, 0, 0, 8},   // 1
    {14, 0, 0, 8},   // 2: linking and renaming between folders
    {15, 0, 0, 8},   // 3: truncating
    {15, 2, 0, 16},  // 4: TCP
    {16, 2, 0, 16},  // 5: ioctl on devices
    {16, 2, 2, 24},  // 6: abstract sockets, signals
};

constexpr std::uint64_t Lowest(unsigned count) {
  return (std::uint64_t{1} << count) - 1;
}

// Entries of the root folder without users' files: devices and terminals, views of other processes,
// and services' runtime files.
constexpr std::array<std::string_view, 4> kSystemFolders{"dev", "proc", "run", "sys"};

Descriptor OpenPlace(const std::string& path, int flags = 0) {
  return Descriptor(open(path.c_str(), O_PATH | O_CLOEXEC | flags));
}

/// The exceptions from a set of rules.
class Exceptions {
 public:
  explicit Exceptions(int ruleset) : ruleset_(ruleset) {}

  /// Lets the place, a file or a folder with all below it, be read. A place that could not be
  /// opened is skipped: nothing below it can be read anyway.
  void LetRead(const Descriptor& place) {
    struct stat info {};
    if (error_ != 0 || !place.IsOpen() || fstat(place.Get(), &info) != 0) return;
    landlock_path_beneath_attr beneath{};
    beneath.parent_fd = place.Get();
    beneath.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE;
    if (S_ISDIR(info.st_mode)) beneath.allowed_access |= LANDLOCK_ACCESS_FS_READ_DIR;
    if (syscall(SYS_landlock_add_rule, ruleset_, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) != 0) {
      error_ = errno;
    }
  }

  /// For the entries of the root folder. Links are skipped, because Landlock checks their targets.
  void LetReadTopFolders() {
    const std::unique_ptr<DIR, int (*)(DIR*)> top(opendir("/"), closedir);
    errno = top == nullptr ? errno : 0;
    while (const dirent* const entry = top == nullptr ? nullptr : readdir(top.get())) {
      const std::string_view name = entry->d_name;
      const bool isNoEntry = name == "." || name == "..";
      if (!isNoEntry && std::ranges::find(kSystemFolders, name) == kSystemFolders.end()) {
        const Descriptor place = OpenPlace('/' + std::string(name), O_NOFOLLOW);
        if (!IsLink(place)) LetRead(place);
      }
      errno = 0;  // distinguishes the end from a failure
    }
    if (error_ == 0) error_ = errno;
  }

  /// For the scene and its possible side files. A scene that is not a regular file is not read.
  void LetReadScene(const std::string& scene) {
    const Descriptor file = OpenPlace(scene);
    struct stat info {};
    if (!file.IsOpen() || fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return;
    LetRead(file);
    const Descriptor folder = OpenPlace(scene.substr(0, scene.rfind('/') + 1) + ".", O_DIRECTORY);
    if (!HoldsSystemFolders(folder)) LetRead(folder);
  }

  int Error() const { return error_; }

 private:
  static bool IsLink(const Descriptor& place) {
    struct stat info {};
    return place.IsOpen() && fstat(place.Get(), &info) == 0 && S_ISLNK(info.st_mode);
  }

  /// Whether the folder is the root folder or a system folder.
  static bool HoldsSystemFolders(const Descriptor& folder) {
    struct stat info {};
    if (!folder.IsOpen() || fstat(folder.Get(), &info) != 0) return false;
    const auto isIt = [&info](const std::string& path) {
      struct stat other {};
      return stat(path.c_str(), &other) == 0 && other.st_dev == info.st_dev &&
             other.st_ino == info.st_ino;
    };
    return isIt("/") || std::ranges::any_of(kSystemFolders, [&](std::string_view name) {
             return isIt('/' + std::string(name));
           });
  }

  int ruleset_;
  int error_ = 0;
};

}  // namespace

std::string RestrictFiles(const std::string& scene) {
  const long newest =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (newest < 1) return ErrnoText(newest < 0 ? errno : ENOSYS);
  const Version& version =
      kVersions[std::min<std::size_t>(static_cast<std::size_t>(newest), std::size(kVersions)) - 1];
  // All named rights are forbidden, except for what is added below.
  const Rules rules{Lowest(version.files), Lowest(version.network), Lowest(version.scopes)};
  const Descriptor ruleset(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &rules, version.size, 0)));
  if (!ruleset.IsOpen()) return ErrnoText(errno);
  Exceptions exceptions(ruleset.Get());
  exceptions.LetReadTopFolders();
  exceptions.LetRead(OpenPlace("/run/media", O_NOFOLLOW));
  exceptions.LetReadScene(scene);
  // AddressSanitizer's reports read the process's own memory map.
  if (kShadowMemory) exceptions.LetRead(OpenPlace("/proc/self"));
  if (exceptions.Error() != 0) return ErrnoText(exceptions.Error());
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      syscall(SYS_landlock_restrict_self, ruleset.Get(), 0) != 0) {
    return ErrnoText(errno);
  }
  return {};
}

}  // namespace mapexport
