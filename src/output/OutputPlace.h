// Puts an output file into its place only when it is whole.
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

/// A temporary folder beside the target, in which its next content is made. The folder has no dot
/// in its name, is held by a lock and goes away with this object, whatever is in it by then.
/// Unlocked left-overs of earlier outputs to the same target are removed first.
class OutputPlace {
 public:
  /// `fileName` is the name that the content will have in the folder. Throws RunError.
  OutputPlace(OutputTarget target, const std::string& fileName);
  /// One with the content that `write` writes, under the target's own name.
  OutputPlace(const OutputTarget& target, const std::function<void(std::ostream&)>& write);
  ~OutputPlace();
  OutputPlace(const OutputPlace&) = delete;
  OutputPlace& operator=(const OutputPlace&) = delete;

  /// The folder, ending in "/"; relative or absolute as the target's path is.
  const std::string& Folder() const { return folder_; }
  /// Where the content is to be made.
  const std::string& File() const { return file_; }

  /// Makes the content by letting `write` write it. Throws RunError when not all of it arrives.
  void Fill(const std::function<void(std::ostream&)>& write);

  /// Gives the file the rights of the one it replaces, and its owner and extended attributes as far
  /// as these can be had, syncs it and moves it to the target. Throws RunError, the target then
  /// being as it was.
  void Commit();

  /// Commits all of them or, when one can't be, none: the targets are as they were then. Who
  /// commits to the target of the first one meanwhile waits, so that files of two runs don't mix.
  /// Throws RunError.
  static void CommitTogether(std::span<OutputPlace* const> places);

  /// A file beside the target that is there, and locked, while files are placed together with it.
  std::string LockPath() const;

  /// What is to be told of a place that is committed.
  struct Warning {
    RemarkCode code;
    std::string text;
  };
  std::vector<Warning> Warnings() const;

 private:
  /// Holds a lock file, and back the signals that would leave it.
  class PlacingLock {
   public:
    explicit PlacingLock(const std::string& path);
    ~PlacingLock();
    PlacingLock(const PlacingLock&) = delete;
    PlacingLock& operator=(const PlacingLock&) = delete;

    /// Whether another process did not give it back in time.
    bool Missed() const { return missed_; }

   private:
    std::string path_;
    std::optional<HoldInterrupts> hold_;
    Descriptor file_;
    bool missed_ = false;
  };

  /// Everything that takes memory or is likely to fail, so that little is left when the first of
  /// several is placed.
  void Prepare();
  void Place();
  /// Keeps what is at the target, so that PutBack can undo Place.
  void KeepOld();
  void PutBack();
  /// What PutBack could not do, empty when nothing.
  std::string NotPutBack() const;

  OutputTarget target_;
  std::string folder_;
  std::string file_;
  std::string oldFile_;      ///< the older content, while it is kept
  Descriptor lock_;          ///< the folder, open
  Descriptor targetFolder_;  ///< open from Prepare on
  std::string notKept_;      ///< what of the older file's owner and attributes could not be had
  bool unlocked_ = false;    ///< another process did not give the lock back
  int syncError_ = 0;        ///< why the target's folder can't be synced
  int putBackError_ = 0;
  bool keptOld_ = false;
  bool movedOld_ = false;  ///< the target is empty until Place
  bool placed_ = false;
  std::unique_ptr<InterruptCleanup> cleanup_;
};

}  // namespace mapexport
