// The export's log: the file "ExportDebug.txt" and the debugger output.
#pragma once

#include <array>
#include <fstream>
#include <ostream>
#include <streambuf>
#include <string>

namespace mapexport {

/// Collects progress and problem reports, one line at a time. Every emitted line is flushed to the
/// file, so that the log is complete up to its last line even if the host stops during an export.
class DebugLog {
 public:
  DebugLog();

  /// The library's one log, made on the first call.
  static DebugLog& Instance();

  /// Opens the file `name`, replacing an earlier file of that name and a file that an earlier
  /// export opened. On failure lines reach the debugger output only, the first of them saying so.
  void Open(const char* name);

  /// Begins a line and returns the stream to compose it in: end it with a newline and flush, then
  /// call Emit. A line that was begun and never emitted is dropped, as when an exception came
  /// between. A line holds at most 4,095 characters with its newline; what is beyond is cut off
  /// before the newline. Numbers look the same in every locale.
  std::ostream& Line();

  /// Sends the composed line to the file and to the debugger output. When the file can't be
  /// written, a line to the debugger output says so, and the file ends there. The line is sent
  /// once, even if the debugger output throws, which leaves this function.
  void Emit();

 private:
  /// A stream buffer over the fixed line buffer that remembers whether something did not fit.
  class LineBuffer : public std::streambuf {
   public:
    LineBuffer() { Rewind(); }
    void Rewind();
    /// Terminates the text with a NUL and returns it; a cut line ends with a newline all the same.
    const char* Terminate();

   private:
    int_type overflow(int_type c) override;

    std::array<char, 4096> text_{};
    bool cut_ = false;
  };

  LineBuffer buffer_;
  std::ostream line_{&buffer_};
  std::string name_;
  bool fileOpen_ = false;  ///< and everything could be written
  std::ofstream file_;
  bool echo_ = true;  ///< send every emitted line to the debugger output
};

}  // namespace mapexport
