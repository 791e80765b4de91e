// Where the log of an exporter goes.
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

/// An exporter opens its log under a fixed name in the current folder, whatever is there, links
/// included, before it shows its dialog. This makes a private folder the current one for as long,
/// and puts the log in its place afterwards. Only what is no file yet, or a regular file with one
/// name, is replaced.
class ExporterLog {
 public:
  /// What an exporter calls its log.
  static constexpr const char* kName = "ExportDebug.txt";

  /// A log for the file `name`, or none without one. There is none either when that file can't be
  /// had or is one of `files`: the exporter will say that it can't be opened.
  ExporterLog(const std::optional<std::string>& name, const TakenFiles& files);
  /// Goes back where an exception kept LeaveFolder from it.
  ~ExporterLog();
  ExporterLog(const ExporterLog&) = delete;
  ExporterLog& operator=(const ExporterLog&) = delete;

  /// The log's file as it was asked for, empty when there is to be none or can be none.
  std::string Name() const { return name_ && trouble_.empty() ? *name_ : std::string(); }

  /// Makes a private folder the current one, in which a log can be made if there is to be one.
  /// `folder` is one in which a temporary folder can be made. Throws RunError.
  void EnterFolder(const std::string& folder);
  /// Goes back. Does nothing when the folder is not entered. Throws RunError.
  void LeaveFolder();

  /// Puts the log in place, unless its file is one of `files` by now, which is a warning then.
  void Place(const TakenFiles& files, Messages& messages);

  /// Warns that there is no log, if one is wanted.
  void WarnOfNone(Messages& messages) const;

 private:
  std::optional<std::string> name_;
  std::string trouble_;
  std::unique_ptr<OutputPlace> place_;
  Descriptor home_;  ///< the current folder of before, while another one is entered
  /// For as long: what the signals' handlers remove has paths that are relative to that folder.
  std::optional<HoldInterrupts> hold_;
};

}  // namespace mapexport
