// What an exporter says during an export, and what of it the person is told.
#pragma once

#include <cstddef>
#include <string>

#include "app/Messages.h"

namespace mapexport {

/// Hears the message boxes and the debugger output of one export. Message boxes are printed at
/// once, but the one that tells of success is held; of the debugger output only what went wrong is
/// told.
class ExporterTalk {
 public:
  /// `messages` must outlive this.
  explicit ExporterTalk(Messages& messages) : messages_(messages) {}

  void HearMessageBox(const std::string& title, const std::string& text);
  void HearDebugOutput(const std::string& text);

  /// Whether the exporter has told of success.
  bool Succeeded() const { return succeeded_; }
  /// Whether no CXP database could be loaded that was named.
  bool CxpFailed() const { return cxpFailed_; }
  /// What the exception was that ended the export, empty when none did.
  const std::string& Exception() const { return exception_; }

  /// Sums up what was heard again and again.
  void PrintCounts();
  /// Prints the held message box.
  void PrintSuccess() const;

 private:
  Messages& messages_;
  bool succeeded_ = false;
  bool hasLog_ = true;  ///< ExportDebug.txt could be opened
  bool cxpFailed_ = false;
  std::string successText_;
  std::string exception_;
  std::size_t invalidFaces_ = 0;
};

}  // namespace mapexport
