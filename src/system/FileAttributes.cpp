#include "system/FileAttributes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <string_view>

#include <sys/xattr.h>
#include <unistd.h>

#include "system/RunError.h"

namespace mapexport {
namespace {

constexpr const char* kAccessList = "system.posix_acl_access";
// The kernel removes the first one when a file's content changes, and sets the others itself.
constexpr std::array<std::string_view, 3> kOfContent{"security.capability", "security.ima",
                                                     "security.evm"};

std::string Lack(std::string_view what, int error) {
  return std::string(what) + ": " + ErrnoText(error);
}

/// What `get` writes into a buffer. Called without a buffer, `get` returns the size it needs. Empty
/// on an error, with the reason in errno.
template <typename Get>
std::optional<std::string> Sized(const Get& get) {
  for (;;) {
    const ssize_t size = get(nullptr, 0);
    if (size < 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    const ssize_t got = size == 0 ? 0 : get(bytes.data(), bytes.size());
    if (got < 0 && errno == ERANGE) continue;  // it has grown in between
    if (got < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
  }
}

std::optional<std::string> Attribute(const std::string& path, const char* name) {
  return Sized(
      [&](char* data, std::size_t size) { return ::lgetxattr(path.c_str(), name, data, size); });
}

std::optional<std::string> Attribute(int file, const char* name) {
  return Sized([&](char* data, std::size_t size) { return ::fgetxattr(file, name, data, size); });
}

}  // namespace

std::string TakeOwner(int to, const struct stat& old) {
  struct stat now {};
  if (::fstat(to, &now) != 0) return Lack("its owner", errno);
  constexpr auto kSameOwner = static_cast<uid_t>(-1);
  constexpr auto kSameGroup = static_cast<gid_t>(-1);
  // Separately: members of a shared file's group may set the group, but not the owner.
  std::string lack;
  if (now.st_gid != old.st_gid && ::fchown(to, kSameOwner, old.st_gid) != 0) {
    lack = Lack("its group", errno);
  }
  if (now.st_uid != old.st_uid && ::fchown(to, old.st_uid, kSameGroup) != 0 && lack.empty()) {
    lack = Lack("its owner", errno);
  }
  return lack;
}

mode_t RightsLike(const struct stat& old, int to) {
  const mode_t rights = old.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
  struct stat now {};
  if (::fstat(to, &now) == 0 && now.st_gid == old.st_gid) return rights;
  const mode_t others = rights & S_IRWXO;
  const mode_t owner = rights & S_IRWXU;
  return owner | (rights & (others << 3)) | others;
}

namespace {

/// The access list, with the rights of the file's group reduced to those of all others.
void NarrowGroup(std::string& list) {
  // Little-endian: a version, then entries of a tag, rights and an id.
  constexpr std::size_t kHeader = 4;
  constexpr std::size_t kEntry = 8;
  constexpr std::size_t kRights = 2;
  constexpr char kGroupTag = 0x04;
  constexpr char kOthersTag = 0x20;
  const auto find = [&](char tag) {
    for (std::size_t at = kHeader; at + kEntry <= list.size(); at += kEntry) {
      if (list[at] == tag && list[at + 1] == 0) return at + kRights;
    }
    return std::string::npos;
  };
  const std::size_t group = find(kGroupTag);
  const std::size_t others = find(kOthersTag);
  if (group == std::string::npos) return;
  const char rights = others == std::string::npos ? '\0' : list[others];
  list[group] = static_cast<char>(list[group] & rights);
}

bool HasGroupOf(int file, const std::string& path) {
  struct stat now {};
  struct stat old {};
  return ::fstat(file, &now) == 0 && ::lstat(path.c_str(), &old) == 0 && now.st_gid == old.st_gid;
}

/// Removes the group's rights that not all others have.
void NarrowGroupRights(int file) {
  struct stat now {};
  if (::fstat(file, &now) != 0) return;
  const mode_t others = now.st_mode & S_IRWXO;
  static_cast<void>(
      ::fchmod(file, (now.st_mode & (S_IRWXU | S_IRWXO)) | (now.st_mode & (others << 3))));
}

}  // namespace

std::string TakeExtendedAttributes(int to, const std::string& from) {
  const std::optional<std::string> names =
      Sized([&](char* data, std::size_t size) { return ::llistxattr(from.c_str(), data, size); });
  if (!names) return errno == ENOTSUP ? std::string() : Lack("its extended attributes", errno);
  std::string lack;
  bool hasAccessList = false;
  for (std::string_view rest = *names; !rest.empty();) {
    const std::string name(rest.substr(0, rest.find('\0')));
    rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    hasAccessList = hasAccessList || name == kAccessList;
    if (std::ranges::find(kOfContent, name) != kOfContent.end()) continue;
    std::optional<std::string> value = Attribute(from, name.c_str());
    if (value && name == kAccessList && !HasGroupOf(to, from)) NarrowGroup(*value);
    if (value && Attribute(to, name.c_str()) == value) continue;
    if (!value || ::fsetxattr(to, name.c_str(), value->data(), value->size(), 0) != 0) {
      if (lack.empty()) lack = Lack("its attribute " + name, errno);
      // Without the list, the list's mask would become the group's rights.
      if (name == kAccessList) NarrowGroupRights(to);
    }
  }
  if (!hasAccessList && ::fremovexattr(to, kAccessList) != 0 && errno != ENODATA &&
      errno != ENOTSUP && lack.empty()) {
    lack = Lack("its rights, without those of its folder", errno);
  }
  return lack;
}

}  // namespace mapexport
