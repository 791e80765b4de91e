// Listens to an exporter and tells the user what matters.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/Messages.h"
#include "app/export/ExporterLog.h"

namespace mapexport {

/// Receives the message boxes and the debugger output of one export. Message boxes are printed and
/// shown at once, except that of success, which is held back. Of the debugger output only failures
/// are reported.
class ExporterTalk {
 public:
  /// Shows a message box in a window and waits for the person.
  using ShowBox = std::function<void(const std::string& title, const std::string& text)>;

  /// `messages` and `log` must outlive this. Without windows `showBox` is empty.
  ExporterTalk(Messages& messages, const ExporterLog& log, ShowBox showBox)
      : messages_(messages), log_(log), showBox_(std::move(showBox)) {}

  void HearMessageBox(const std::string& title, const std::string& text);
  void HearDebugOutput(const std::string& text);

  /// Whether the exporter has reported success.
  bool Succeeded() const { return succeeded_; }
  /// Whether a named CXP database could not be loaded.
  bool CxpFailed() const { return cxpFailed_; }
  /// The exception that ended the export; empty for none.
  const std::string& Exception() const { return exception_; }

  /// Faces of all groups before and after welding, copies of two-sided ones included.
  struct FaceCounts {
    std::uint64_t before = 0;
    std::uint64_t after = 0;
  };
  /// Empty without welding.
  const std::optional<FaceCounts>& Faces() const { return faces_; }
  /// The triangles without an area, which the exporter leaves out.
  std::uint64_t DegenerateTriangles() const { return invalidFaces_; }
  /// The names of the nodes that have them, as the log has them.
  const std::vector<std::string>& DegenerateNodes() const { return degenerateNodes_; }

  /// Prints one note for all messages that are only counted.
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
  std::uint64_t invalidFaces_ = 0;
  std::vector<std::string> degenerateNodes_;
  std::optional<FaceCounts> faces_;
};

}  // namespace mapexport
