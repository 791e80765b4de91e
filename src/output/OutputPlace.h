// Puts an output file in place only when it is complete.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "output/InterruptCleanup.h"
#include "output/OutputTarget.h"
#include "system/Descriptor.h"
#include "system/HoldInterrupts.h"
#include "system/RemarkCode.h"

namespace mapexport {

/// A temporary folder beside the target, in which its new content is made. The folder has no dot in
/// its name, is locked, and is removed with all its files at the end of this object's lifetime.
/// Unlocked left-overs of earlier outputs to the same target are removed first.
class OutputPlace {
 public:
  /// `fileName` is the name of the content in the folder. Throws RunError.
  OutputPlace(OutputTarget target, const std::string& fileName);
  /// With the content that `write` writes, under the target's own name.
  OutputPlace(const OutputTarget& target, const std::function<void(std::ostream&)>& write);
  ~OutputPlace();
  OutputPlace(const OutputPlace&) = delete;
  OutputPlace& operator=(const OutputPlace&) = delete;

  /// The folder, ending in "/"; relative or absolute like the target's path.
  const std::string& Folder() const { return folder_; }
  /// The path at which the content is to be made.
  const std::string& File() const { return file_; }

  /// Makes the content by calling `write`. Throws RunError unless all of it is written.
  void Fill(const std::function<void(std::ostream&)>& write);

  /// Gives the file the permissions of the one it replaces, and its owner and extended attributes
  /// as far as possible, syncs it and moves it to the target. Throws RunError and leaves the target
  /// as it was.
  void Commit();
  /// The same without syncing, which takes most of the time: for a file that may be lost with the
  /// machine's power.
  void CommitUnsynced();
  /// The same as Commit, but replaces nothing: returns false when a file has appeared at the
  /// target.
  bool CommitNew();

  /// Commits all of them or, if one fails, none: all targets stay as they were. A process that
  /// commits to the first target meanwhile waits, so that files of two runs don't mix. Throws
  /// RunError. `beforePlacing` is called when the slow part is done; it may be empty.
  static void CommitTogether(std::span<OutputPlace* const> places,
                             const std::function<void()>& beforePlacing = {});

  /// Removes the temporary folders of processes that ended without removing them, beside the target
  /// at `path`.
  static void RemoveLeftOvers(const std::string& path);

  /// A lock file that exists beside the target while several files are put in place together.
  std::string LockPath() const;

  /// Warnings about a committed place.
  struct Warning {
    RemarkCode code;
    std::string text;
  };
  std::vector<Warning> Warnings() const;

 private:
  /// Holds a lock file, and holds back signals that would leave it behind.
  class PlacingLock {
   public:
    explicit PlacingLock(const std::string& path);
    ~PlacingLock();
    PlacingLock(const PlacingLock&) = delete;
    PlacingLock& operator=(const PlacingLock&) = delete;

    /// Whether another process did not release the lock in time.
    bool Missed() const { return missed_; }

   private:
    std::string path_;
    std::optional<HoldInterrupts> hold_;
    Descriptor file_;
    bool missed_ = false;
  };

  /// Does everything that takes memory or is likely to fail, so that Place is unlikely to.
  void Prepare();
  void Place();
  void SyncPlaced();
  /// Keeps the older content, so that PutBack can undo Place.
  void KeepOld();
  void PutBack();
  /// Why PutBack failed; empty when it succeeded.
  std::string NotPutBack() const;

  OutputTarget target_;
  std::string folder_;
  std::string file_;
  std::string oldFile_;      ///< the older content, while it is kept
  Descriptor lock_;          ///< the folder, open
  Descriptor targetFolder_;  ///< open since Prepare
  std::string notKept_;      ///< which of the older file's owner and attributes could not be kept
  bool synced_ = true;       ///< it is to be synced
  bool unlocked_ = false;    ///< another process did not release the lock
  int syncError_ = 0;        ///< why the target's folder can't be synced
  int putBackError_ = 0;
  bool keptOld_ = false;
  bool movedOld_ = false;  ///< the target is empty until Place
  bool placed_ = false;
  std::unique_ptr<InterruptCleanup> cleanup_;
};

}  // namespace mapexport
