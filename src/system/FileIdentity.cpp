#include "system/FileIdentity.h"

#include <cerrno>
#include <utility>

#include <limits.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace mapexport {
namespace {

constexpr int kMaxLinks = 40;

/// Whether `folder` is one whose links lead to the open files of processes, not to paths.
bool IsOfProcesses(const std::string& folder) {
  struct statfs info {};
  return statfs(folder.c_str(), &info) == 0 && info.f_type == PROC_SUPER_MAGIC;
}

}  // namespace

std::string FolderPart(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

std::string NamePart(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string FolderOf(const std::string& path) {
  const std::string folder = FolderPart(path);
  return folder.empty() ? "." : folder;
}

std::optional<std::string> FollowLinks(const std::string& path) {
  std::string end = path;
  for (int links = 0; links <= kMaxLinks; ++links) {
    struct stat info {};
    if (lstat(end.c_str(), &info) != 0) {
      if (errno == ENOENT) return end;
      return std::nullopt;
    }
    if (!S_ISLNK(info.st_mode)) return end;
    if (IsOfProcesses(FolderOf(end))) {
      errno = ENXIO;
      return std::nullopt;
    }
    std::string target(PATH_MAX, '\0');
    const ssize_t length = readlink(end.c_str(), target.data(), target.size());
    if (length < 0) return std::nullopt;
    target.resize(static_cast<std::size_t>(length));
    if (!target.starts_with('/')) target.insert(0, FolderPart(end));
    end = std::move(target);
  }
  errno = ELOOP;
  return std::nullopt;
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) == 0) return FileIdentity{info.st_dev, info.st_ino, {}};
  // Without /proc these names lead nowhere.
  const int stream = path == "/dev/stdin"    ? STDIN_FILENO
                     : path == "/dev/stdout" ? STDOUT_FILENO
                                             : -1;
  if (fstat(stream, &info) == 0) return FileIdentity{info.st_dev, info.st_ino, {}};
  const std::optional<std::string> end = FollowLinks(path);
  if (!end || stat(FolderOf(*end).c_str(), &info) != 0) return std::nullopt;
  return FileIdentity{info.st_dev, info.st_ino, NamePart(*end)};
}

}  // namespace mapexport
