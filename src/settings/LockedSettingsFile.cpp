#include "settings/LockedSettingsFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "settings/ReadSettingsFile.h"
#include "settings/SettingsError.h"
#include "system/FileAttributes.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kPause{20};

void MakeFolders(const fs::path& folder) {
  std::error_code unknown;
  if (folder.empty() || fs::exists(folder, unknown)) return;
  MakeFolders(folder.parent_path());
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
    throw SettingsError("the folder " + folder.string() + " can't be made", errno);
  }
}

/// A new file in `folder` that is removed again unless it is renamed. Every holder of the settings
/// file's lock uses the same name, so a file that a killed process left behind is replaced.
class TemporaryFile {
 public:
  TemporaryFile(const fs::path& folder, const struct stat& locked)
      : path_((folder / fmt::format(".mapexport-settings-{:x}", locked.st_ino)).string()) {
    ::unlink(path_.c_str());
    file_ = Descriptor(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file_.IsOpen()) throw SettingsError("no file can be made beside it", errno);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (file_.IsOpen() && !renamed_) ::unlink(path_.c_str());
  }

  void Write(std::string_view bytes) {
    const int error = WriteAll(file_.Get(), bytes);
    if (error != 0) throw SettingsError("the new file beside it can't be written", error);
  }

  /// An owner or attribute that can't be kept is no reason to lose the settings.
  void TakeAttributes(const struct stat& old, const std::string& path) {
    TakeOwner(file_.Get(), old);
    if (::fchmod(file_.Get(), RightsLike(old, file_.Get())) != 0) {
      throw SettingsError("the new file beside it can't be given its mode", errno);
    }
    TakeExtendedAttributes(file_.Get(), path);
  }

  void RenameTo(const std::string& path) {
    // Without the sync, after a crash the new name could lead to an empty file.
    if (::fsync(file_.Get()) != 0) {
      throw SettingsError("the new file beside it can't be written", errno);
    }
    if (::rename(path_.c_str(), path.c_str()) != 0) {
      throw SettingsError("the file can't be replaced", errno);
    }
    renamed_ = true;
  }

 private:
  std::string path_;
  Descriptor file_;
  bool renamed_ = false;
};

}  // namespace

LockedSettingsFile::LockedSettingsFile(const std::string& path,
                                       std::chrono::milliseconds patience) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (true) {
    hold_.emplace();
    OpenOrCreate(path);
    try {
      if (TryLock(path) && LeadsHere(path)) return;
    } catch (const std::bad_alloc&) {
      RemoveIfUnused();
      throw;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      throw SettingsError(fmt::format(
          "another process still locks or replaces the file after {} ms", patience.count()));
    }
    hold_.reset();
    std::this_thread::sleep_for(kPause);
  }
}

LockedSettingsFile::~LockedSettingsFile() {
  RemoveIfUnused();
}

void LockedSettingsFile::RemoveIfUnused() {
  struct stat status {};
  // A program that takes no lock may have written to the file.
  if (madeHere_ && ::fstat(file_.Get(), &status) == 0 && status.st_size == 0) {
    ::unlink(realPath_.c_str());
  }
}

std::string LockedSettingsFile::Read() {
  return ReadSettingsFile(file_.Get());
}

void LockedSettingsFile::Replace(std::string_view bytes) {
  struct stat status {};
  if (::fstat(file_.Get(), &status) != 0) throw SettingsError("the file can't be read", errno);
  TemporaryFile temporary(fs::path(realPath_).parent_path(), status);
  temporary.Write(bytes);
  temporary.TakeAttributes(status, realPath_);
  temporary.RenameTo(realPath_);
  madeHere_ = false;
}

void LockedSettingsFile::OpenOrCreate(const std::string& path) {
  // O_NONBLOCK: opening a pipe must not wait; it is refused afterwards.
  constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NONBLOCK;
  madeHere_ = false;
  realPath_ = path;
  file_ = Descriptor(::open(path.c_str(), kFlags));
  if (!file_.IsOpen() && errno == ENOENT) {
    MakeFolders(fs::path(path).parent_path());
    file_ = Descriptor(::open(path.c_str(), kFlags | O_CREAT, 0666));
    madeHere_ = file_.IsOpen();
  }
  if (!file_.IsOpen()) throw SettingsError("the file can't be opened for writing", errno);
}

bool LockedSettingsFile::TryLock(const std::string& path) {
  if (::flock(file_.Get(), LOCK_EX | LOCK_NB) == 0) return true;
  if (errno == EWOULDBLOCK || errno == EINTR) return false;
  const int error = errno;
  if (LeadsHere(path)) RemoveIfUnused();
  throw SettingsError("the file can't be locked", error);
}

bool LockedSettingsFile::LeadsHere(const std::string& path) {
  std::error_code error;
  realPath_ = fs::canonical(path, error).string();
  struct stat here {};
  struct stat there {};
  return !error && ::fstat(file_.Get(), &here) == 0 && ::stat(realPath_.c_str(), &there) == 0 &&
         here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

}  // namespace mapexport
