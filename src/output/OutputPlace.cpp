#include "output/OutputPlace.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <exception>
#include <string_view>
#include <thread>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "system/FdOutput.h"
#include "system/FileAttributes.h"
#include "system/FileIdentity.h"
#include "system/HoldInterrupts.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

// Placing takes almost no time. A process that holds the lock longer than this is stuck.
constexpr std::chrono::seconds kLockPatience{20};
constexpr std::chrono::milliseconds kLockPause{10};
constexpr std::string_view kRandomPart = "XXXXXX";

/// The prefix of the names of a target's temporary folders: the same for every export to the
/// target, and without a dot whatever the target's name is.
std::string FolderNamePrefix(const std::string& targetPath) {
  std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
  for (const char c : NamePart(targetPath)) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  }
  return fmt::format("mapexport-{:016x}-", hash);
}

/// Removes the folder and the files in it; what can't be removed stays.
void RemoveFolder(const std::string& folder, int fd) {
  if (DIR* const entries = fdopendir(dup(fd)); entries != nullptr) {
    while (const dirent* const entry = readdir(entries)) unlinkat(fd, entry->d_name, 0);
    closedir(entries);
  }
  rmdir(folder.c_str());
}

enum class WithoutLocks { kAccept, kRefuse };

/// Opens and locks a temporary folder. If that fails, returns a closed descriptor and the reason in
/// errno: EWOULDBLOCK while another process holds it, ENOENT when it is gone. On a file system
/// without locks the folder is opened only if `withoutLocks` allows that.
Descriptor LockFolder(const std::string& folder, WithoutLocks withoutLocks) {
  Descriptor fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!fd.IsOpen()) return fd;
  const bool locked = flock(fd.Get(), LOCK_EX | LOCK_NB) == 0;
  if (!locked && (errno == EWOULDBLOCK || withoutLocks == WithoutLocks::kRefuse)) return {};
  struct stat info {};
  if (fstat(fd.Get(), &info) != 0) return {};
  if (info.st_nlink == 0) {  // it was removed between the two steps
    errno = ENOENT;
    return {};
  }
  return fd;
}

/// Makes a temporary folder for `target` and locks it with `lock`.
std::string MakeFolder(const OutputTarget& target, Descriptor& lock) {
  for (;;) {
    std::string folder =
        FolderPart(target.path) + FolderNamePrefix(target.path) + std::string(kRandomPart);
    const bool made = mkdtemp(folder.data()) != nullptr;
    if (made) lock = LockFolder(folder, WithoutLocks::kAccept);
    if (lock.IsOpen()) return folder;
    const int error = errno;
    if (made) rmdir(folder.c_str());
    // Another export may remove the new folder as a left-over before it is locked.
    if (made && (error == ENOENT || error == EWOULDBLOCK)) continue;
    ThrowCannotWrite(target.name, fmt::format("no temporary folder can be made in {}: {}",
                                              FolderOf(target.path), ErrnoText(error)));
  }
}

}  // namespace

OutputPlace::OutputPlace(OutputTarget target, const std::string& fileName)
    : target_(std::move(target)) {
  RemoveLeftOvers(target_.path);
  const HoldInterrupts hold;
  const std::string made = MakeFolder(target_, lock_);
  try {
    folder_ = made + '/';
    file_ = folder_ + fileName;
    oldFile_ = folder_ + (fileName == "old" ? "older" : "old");
    cleanup_ = std::make_unique<InterruptCleanup>(folder_, file_);
  } catch (...) {
    rmdir(made.c_str());
    throw;
  }
}

OutputPlace::OutputPlace(const OutputTarget& target,
                         const std::function<void(std::ostream&)>& write)
    : OutputPlace(target, NamePart(target.path)) {
  Fill(write);
}

OutputPlace::~OutputPlace() {
  // The folder has the only copy of the older output.
  if (putBackError_ != 0 && (keptOld_ || movedOld_)) return;
  // These two are probably all; remove them even if listing the folder fails.
  unlink(file_.c_str());
  unlink(oldFile_.c_str());
  RemoveFolder(folder_, lock_.Get());
}

void OutputPlace::RemoveLeftOvers(const std::string& path) {
  DIR* const entries = opendir(FolderOf(path).c_str());
  if (entries == nullptr) return;  // a writable folder need not be readable
  const std::string prefix = FolderNamePrefix(path);
  while (const dirent* const entry = readdir(entries)) {
    const std::string_view name = entry->d_name;
    if (!name.starts_with(prefix) || name.size() != prefix.size() + kRandomPart.size()) continue;
    const std::string folder = FolderPart(path) + std::string(name);
    // Without locks nobody can tell a left-over from the folder of a running export.
    const Descriptor lock = LockFolder(folder, WithoutLocks::kRefuse);
    if (lock.IsOpen()) RemoveFolder(folder, lock.Get());
  }
  closedir(entries);
}

void OutputPlace::Fill(const std::function<void(std::ostream&)>& write) {
  const Descriptor file(open(file_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  int error = errno;
  if (file.IsOpen()) {
    FdOutput output(file.Get());
    std::ostream out(&output);
    write(out);
    error = output.Finish();
  }
  if (error != 0) ThrowCannotWrite(target_.name, ErrnoText(error));
}

void OutputPlace::Commit() {
  Prepare();
  Place();
}

void OutputPlace::CommitUnsynced() {
  synced_ = false;
  Commit();
}

void OutputPlace::Prepare() {
  const Descriptor file(open(file_.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  bool prepared = file.IsOpen();
  if (prepared && target_.old) {
    notKept_ = TakeOwner(file.Get(), *target_.old);
    prepared = fchmod(file.Get(), RightsLike(*target_.old, file.Get())) == 0;
  }
  if (prepared && target_.old) {
    std::string lack = TakeExtendedAttributes(file.Get(), target_.path);
    if (notKept_.empty()) notKept_ = std::move(lack);
  }
  if (!prepared || (synced_ && fsync(file.Get()) != 0))
    ThrowCannotWrite(target_.name, ErrnoText(errno));
  if (!synced_) return;
  const std::string folder = FolderOf(target_.path);
  targetFolder_ = Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!targetFolder_.IsOpen()) syncError_ = errno;
}

std::string OutputPlace::LockPath() const {
  return FolderPart(target_.path) + FolderNamePrefix(target_.path) + "lock";
}

OutputPlace::PlacingLock::PlacingLock(const std::string& path) : path_(path) {
  const auto deadline = std::chrono::steady_clock::now() + kLockPatience;
  while (true) {
    hold_.emplace();
    file_ = Descriptor(open(path.c_str(), O_RDONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!file_.IsOpen()) return;  // no space for a lock file: go on without it
    struct stat here {};
    struct stat there {};
    if (flock(file_.Get(), LOCK_EX | LOCK_NB) != 0) {
      // There are file systems without locks.
      if (errno != EWOULDBLOCK && errno != EINTR) break;
    } else if (fstat(file_.Get(), &here) != 0 ||
               (stat(path.c_str(), &there) != 0 && errno != ENOENT)) {
      break;
    } else if (here.st_dev == there.st_dev && here.st_ino == there.st_ino) {
      return;
    }  // else it was removed, and perhaps created again, before it was locked
    file_ = Descriptor();
    missed_ = std::chrono::steady_clock::now() >= deadline;
    if (missed_) return;
    hold_.reset();
    std::this_thread::sleep_for(kLockPause);
  }
  unlink(path.c_str());
  file_ = Descriptor();
}

OutputPlace::PlacingLock::~PlacingLock() {
  // A process that waits for this file sees that it is gone, and creates another.
  if (file_.IsOpen()) unlink(path_.c_str());
}

bool OutputPlace::CommitNew() {
  if (target_.old) return false;
  Prepare();
  const char* const from = file_.c_str();
  const char* const to = target_.path.c_str();
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) != 0) {
    // Some file systems have no such renaming, but links.
    const bool linked = errno == EINVAL && link(from, to) == 0;
    if (!linked && errno == EEXIST) return false;
    if (!linked) ThrowCannotWrite(target_.name, ErrnoText(errno));
  }
  SyncPlaced();
  return true;
}

void OutputPlace::Place() {
  if (rename(file_.c_str(), target_.path.c_str()) != 0) {
    ThrowCannotWrite(target_.name, ErrnoText(errno));
  }
  SyncPlaced();
}

void OutputPlace::SyncPlaced() {
  placed_ = true;
  // Some file systems can't sync folders.
  if (synced_ && syncError_ == 0 && fsync(targetFolder_.Get()) != 0 && errno != EINVAL)
    syncError_ = errno;
}

std::vector<OutputPlace::Warning> OutputPlace::Warnings() const {
  std::vector<Warning> warnings;
  if (!notKept_.empty()) {
    warnings.push_back(
        {"attributes-not-kept",
         fmt::format("{}: is in its place, but could not keep {}", target_.name, notKept_)});
  }
  if (unlocked_) {
    warnings.push_back(
        {"output-not-locked",
         fmt::format(
             "{}: is in its place, but another export to it has not ended for {} s: files of "
             "the two may be mixed",
             target_.name, kLockPatience.count())});
  }
  if (syncError_ != 0) {
    warnings.push_back(
        {"folder-not-synced", fmt::format("{}: is in its place, but its folder can't be synced: {}",
                                          target_.name, ErrnoText(syncError_))});
  }
  return warnings;
}

void OutputPlace::KeepOld() {
  keptOld_ = link(target_.path.c_str(), oldFile_.c_str()) == 0;
  if (keptOld_ || errno == ENOENT) return;
  RequireRegularFileOrNothing(target_.path);
  // Some file systems have no links.
  movedOld_ = rename(target_.path.c_str(), oldFile_.c_str()) == 0;
  if (!movedOld_) ThrowCannotWrite(target_.name, ErrnoText(errno));
}

void OutputPlace::PutBack() {
  int result = 0;
  if (movedOld_ || (keptOld_ && placed_)) {
    result = rename(oldFile_.c_str(), target_.path.c_str());
  } else if (placed_) {
    result = unlink(target_.path.c_str());
  }
  if (result != 0) putBackError_ = errno;
}

std::string OutputPlace::NotPutBack() const {
  if (putBackError_ == 0) return {};
  const std::string reason = ErrnoText(putBackError_);
  if (!movedOld_ && !keptOld_) {
    return fmt::format("; {} was placed and can't be removed: {}", target_.name, reason);
  }
  return fmt::format("; {} can't be put back, it is {} now: {}", target_.name, oldFile_, reason);
}

void OutputPlace::CommitTogether(std::span<OutputPlace* const> places,
                                 const std::function<void()>& beforePlacing) {
  for (OutputPlace* const place : places) place->Prepare();
  if (beforePlacing) beforePlacing();
  // Two runs that write the same files have the same first one. With several locks each run could
  // wait for the other.
  const PlacingLock lock(places.front()->LockPath());
  places.front()->unlocked_ = lock.Missed();
  try {
    // Nothing can fail after the last one is placed, so nothing needs a copy.
    for (OutputPlace* const place : places.first(places.size() - 1)) place->KeepOld();
    for (OutputPlace* const place : places) place->Place();
  } catch (const std::exception& error) {
    for (OutputPlace* const place : places) place->PutBack();
    std::string notPutBack;
    for (const OutputPlace* const place : places) notPutBack += place->NotPutBack();
    if (!notPutBack.empty()) throw RunError(error.what() + notPutBack);
    throw;
  }
  for (const OutputPlace* const place : places) unlink(place->oldFile_.c_str());
}

}  // namespace mapexport
