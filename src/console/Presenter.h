// What can show dialogs, boxes and cursors to a person.
#pragma once

#include <optional>
#include <string>

#include "console/PresentedDialog.h"
#include "host/Resources.h"
#include "host/Types.h"

namespace mapexport {

/// A file-open box with one filter.
struct FileBox {
  std::string display;                    ///< what the filter is called
  std::string pattern;                    ///< "*.cxp;*.txt"; empty: every file
  std::optional<std::string> initialDir;  ///< none: the presenter's choice
};

/// Windows on a display. Texts and paths are bytes, read as UTF-8; what is not UTF-8 is shown
/// replaced. One window of its own owns dialogs and boxes; each of these is modal, and owned by the
/// one that is open already. All calls happen on the thread that made it.
class Presenter {
 public:
  virtual ~Presenter() = default;

  /// Shows the dialog and returns when it has ended, or when the system takes the windows away.
  /// `window` is its handle; the template outlives the call.
  virtual void ShowDialog(HWND window, const DialogTemplate& dialog, PresentedDialog& states) = 0;
  /// The states of that dialog have changed. Does nothing when it isn't shown.
  virtual void UpdateDialog(HWND window) = 0;

  /// Shows a message with an OK button and waits for it.
  virtual void ShowMessageBox(const std::string& title, const std::string& text) = 0;
  /// The path of the file that the person chooses; nothing when they cancel.
  virtual std::optional<std::string> PickFile(const FileBox& box) = 0;

  // A cursor stays until the next of these calls, and is on the display when the call returns.
  virtual void ShowCursor(const CursorImage& image) = 0;
  virtual void ShowWaitCursor() = 0;
  virtual void HideCursor() = 0;

  /// Shows the owner window, and in it what is being done. Nothing is on the display before.
  virtual void ShowStatus(const std::string& status) = 0;
};

/// Which form of these classes, and of all that they name, a library of windows was built with.
inline constexpr unsigned kPresenterVersion = 1;

/// The function by which such a library makes its presenter, to be deleted by the caller; the owner
/// window gets that title. Null when the library speaks another version. A display must be there:
/// the process is ended otherwise.
using CreatePresenterFunction = Presenter*(unsigned version, const char* title);
inline constexpr const char* kCreatePresenterName = "CreatePresenter";

}  // namespace mapexport
