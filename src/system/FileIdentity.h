// Tells whether two paths lead to the same file.
#pragma once

#include <optional>
#include <string>
#include <tuple>

#include <sys/types.h>

namespace mapexport {

/// Two paths that lead to one file, by links or under several names, have equal identities.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  std::string name;  ///< of a file that is not there yet; device and inode are its folder's then

  friend bool operator<(const FileIdentity& a, const FileIdentity& b) {
    return std::tie(a.device, a.inode, a.name) < std::tie(b.device, b.inode, b.name);
  }
};

/// Empty when not even the folder exists. Cost: one or two system calls, more for links that lead
/// nowhere.
std::optional<FileIdentity> IdentityOf(const std::string& path);

/// Follows the links at `path`, at most 40, and returns the path at their end, which need not
/// exist; `path` itself when it is no link. Empty, with the reason in errno, when that fails: ENXIO
/// for a link to what a process has open (/dev/stdout, /proc/self/fd/3), which is no place for a
/// file.
std::optional<std::string> FollowLinks(const std::string& path);

/// `path` up to and including its last "/", empty when it has none; and what follows.
std::string FolderPart(const std::string& path);
std::string NamePart(const std::string& path);

/// The folder of `path` in a form that can be opened.
std::string FolderOf(const std::string& path);

}  // namespace mapexport
