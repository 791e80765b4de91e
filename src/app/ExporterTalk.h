// What an exporter says during an export, and what of it the person is told.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "app/ExporterLog.h"
#include "app/Messages.h"

namespace mapexport {

/// Hears the message boxes and the debugger output of one export. Message boxes are printed and
/// shown at once, but the one that tells of success is held; of the debugger output only what went
/// wrong is told.
class ExporterTalk {
 public:
  /// Shows a message box in a window and waits for the person.
  using ShowBox = std::function<void(const std::string& title, const std::string& text)>;

  /// `messages` and `log` must outlive this. Without windows `showBox` is empty.
  ExporterTalk(Messages& messages, const ExporterLog& log, ShowBox showBox)
      : messages_(messages), log_(log), showBox_(std::move(showBox)) {}

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
  /// Prints and shows the held message box.
  void TellSuccess() const;

 private:
  void Tell(const std::string& title, const std::string& text) const;

  Messages& messages_;
  const ExporterLog& log_;
  ShowBox showBox_;
  bool succeeded_ = false;
  bool hasLog_ = true;  ///< the log could be opened and written
  bool logHasControls_ = false;
  bool cxpFailed_ = false;
  std::string successText_;
  std::string exception_;
  std::size_t invalidFaces_ = 0;
};

}  // namespace mapexport
