#include "app/export/ExporterLog.h"

#include <cerrno>
#include <exception>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/WriteOutput.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

/// Why a log may not replace the file at `path`; empty when it may.
std::string WhyKept(const std::string& path, const TakenFiles& files) {
  if (const std::string what = files.WhatIs(path); !what.empty()) {
    return fmt::format("it is the {} itself", what);
  }
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0) return {};  // placing reports another error
  if (S_ISLNK(info.st_mode)) return "it is a link";
  if (S_ISREG(info.st_mode) && info.st_nlink != 1) return "it has another name, too";
  return {};
}

/// The reason of an output's error, without the file name and prefix.
std::string ReasonWithout(const std::string& name, const std::exception& error) {
  const std::string reason = ReasonOf(error);
  const std::string begin = fmt::format("{}: cannot be written: ", name);
  return reason.starts_with(begin) ? reason.substr(begin.size()) : reason;
}

[[noreturn]] void ThrowNoFolder(const std::string& what) {
  throw RunError(fmt::format("{}: {}", what, ErrnoText(errno)));
}

}  // namespace

ExporterLog::ExporterLog(const std::optional<std::string>& name, const TakenFiles& files)
    : name_(name) {
  if (!name_) return;
  trouble_ = WhyKept(*name_, files);
  if (!trouble_.empty()) return;
  try {
    OutputTarget target = FindOutput(*name_);
    if (target.path != *name_) throw RunError("it is a link");  // it became one just now
    place_ = std::make_unique<OutputPlace>(std::move(target), kName);
  } catch (const std::exception& error) {
    trouble_ = ReasonWithout(*name_, error);
  }
}

ExporterLog::~ExporterLog() {
  // This worked when the folder was left.
  if (home_.IsOpen()) static_cast<void>(!fchdir(home_.Get()));
}

void ExporterLog::EnterFolder(const std::string& folder) {
  Descriptor home(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  // In a folder that we can't return to, an exporter can't open a file either: stay in it.
  if (!home.IsOpen() || fchdir(home.Get()) != 0) {
    trouble_ = fmt::format("the current directory: {}", ErrnoText(errno));
    place_.reset();
    return;
  }
  hold_.emplace();
  if (place_) {
    if (chdir(place_->Folder().c_str()) != 0) ThrowNoFolder(place_->Folder());
  } else {
    // A removed folder as the current one: the exporter can't create a file in it.
    const std::string gone = folder + "gone";
    if (mkdir(gone.c_str(), 0700) != 0) ThrowNoFolder(gone);
    const Descriptor entered(open(gone.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const int error = entered.IsOpen() ? 0 : errno;
    if (rmdir(gone.c_str()) != 0) ThrowNoFolder(gone);
    errno = error;
    if (!entered.IsOpen() || fchdir(entered.Get()) != 0) ThrowNoFolder(gone);
  }
  home_ = std::move(home);
}

void ExporterLog::LeaveFolder() {
  if (!home_.IsOpen()) return;
  if (fchdir(home_.Get()) != 0) ThrowNoFolder("the current directory");
  home_ = Descriptor();
  hold_.reset();
}

void ExporterLog::Place(const TakenFiles& files, Messages& messages) {
  const std::unique_ptr<OutputPlace> place = std::move(place_);  // its folder is removed at the end
  if (!place) return;
  struct stat info {};
  if (stat(place->File().c_str(), &info) == 0) {
    trouble_ = WhyKept(*name_, files);
  } else {
    if (errno == ENOENT) return;  // the exporter has reported why
    trouble_ = ErrnoText(errno);
  }
  if (trouble_.empty()) {
    try {
      place->CommitUnsynced();
      TellPlaced(*place, messages);
    } catch (const std::exception& error) {
      trouble_ = ReasonWithout(*name_, error);
    }
  }
  if (!trouble_.empty()) WarnOfNone(messages);
}

void ExporterLog::WarnOfNone(Messages& messages) const {
  if (!name_) return;
  messages.Warning("no-export-log", fmt::format("{}: cannot be written{}{}; this export has no log",
                                                *name_, trouble_.empty() ? "" : ": ", trouble_));
}

}  // namespace mapexport
