#include "output/OutputTarget.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "system/FileIdentity.h"
#include "system/RunError.h"

namespace mapexport {

bool IsStandardOutput(std::string_view path) {
  constexpr std::array<std::string_view, 4> kNames{"-", "/dev/stdout", "/dev/fd/1",
                                                   "/proc/self/fd/1"};
  return std::ranges::find(kNames, path) != kNames.end();
}

OutputTarget FindOutput(const std::string& output) {
  if (IsStandardOutput(output)) return {"standard output", "/dev/stdout", std::nullopt, true};
  OutputTarget target{output, {}, std::nullopt};
  if (std::optional<std::string> end = FollowLinks(output)) {
    target.path = std::move(*end);
  } else {
    ThrowCannotWrite(output, errno == ENXIO
                                 ? "it leads to something that a process has open, not to a file"
                                 : ErrnoText(errno));
  }
  RequireRegularFileOrNothing(output);
  if (NamePart(target.path).empty()) ThrowCannotWrite(output, "it leads to a folder");

  const std::string folder = FolderOf(target.path);
  if (faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
    ThrowCannotWrite(output, fmt::format("the folder {}: {}", folder, ErrnoText(errno)));
  }
  struct stat info {};
  if (stat(target.path.c_str(), &info) == 0) {
    target.old = info;
    if (faccessat(AT_FDCWD, target.path.c_str(), W_OK, AT_EACCESS) != 0) {
      ThrowCannotWrite(output, ErrnoText(errno));
    }
  }
  return target;
}

void RequireRegularFileOrNothing(const std::string& path) {
  if (NamePart(path).empty()) ThrowCannotWrite(path, "it names a folder, not a file");
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    if (errno == ENOENT) return;
    ThrowCannotWrite(path, ErrnoText(errno));
  }
  if (S_ISDIR(info.st_mode)) ThrowCannotWrite(path, "it is a folder");
  if (!S_ISREG(info.st_mode)) ThrowCannotWrite(path, "it is not a regular file");
}

void ThrowCannotWrite(const std::string& name, const std::string& why) {
  throw RunError(fmt::format("{}: cannot be written: {}", name, why));
}

}  // namespace mapexport
