// Where an exporter's log goes.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/Messages.h"
#include "output/OutputPlace.h"
#include "output/TakenFiles.h"
#include "system/Descriptor.h"
#include "system/HoldInterrupts.h"

namespace mapexport {

/// An exporter opens its log under a fixed name in the current folder before it shows its dialog,
/// and would follow links and overwrite anything there. So this makes a private folder the current
/// one during that time, and afterwards puts the log in place. It replaces only a regular file with
/// one name.
class ExporterLog {
 public:
  /// The file name that an exporter gives its log.
  static constexpr const char* kName = "ExportDebug.txt";

  /// A log in the file `name`; no log without a name. There is also no log when that file can't be
  /// written or is one of `files`; the exporter then reports that it can't open its log.
  ExporterLog(const std::optional<std::string>& name, const TakenFiles& files);
  /// Returns to the user's folder if an exception skipped LeaveFolder.
  ~ExporterLog();
  ExporterLog(const ExporterLog&) = delete;
  ExporterLog& operator=(const ExporterLog&) = delete;

  /// The log's file as it was named; empty when there is no log.
  std::string Name() const { return name_ && trouble_.empty() ? *name_ : std::string(); }

  /// Makes a private folder the current one; a log can be created in it only if one is wanted. A
  /// temporary folder must be possible in `folder`. Throws RunError.
  void EnterFolder(const std::string& folder);
  /// Returns to the user's folder. Does nothing outside of the private one. Throws RunError.
  void LeaveFolder();

  /// Puts the log in place. If its file has become one of `files`, warns instead.
  void Place(const TakenFiles& files, Messages& messages);

  /// Warns that there is no log, if one is wanted.
  void WarnOfNone(Messages& messages) const;

 private:
  std::optional<std::string> name_;
  std::string trouble_;
  std::unique_ptr<OutputPlace> place_;
  Descriptor home_;  ///< the user's current folder, while in the private one
  /// Meanwhile signals wait: their handlers remove files by paths relative to the user's folder.
  std::optional<HoldInterrupts> hold_;
};

}  // namespace mapexport
