// The interface that shows dialogs, boxes and cursors to a user.
#pragma once

#include <optional>
#include <string>

#include "console/PresentedDialog.h"
#include "host/Resources.h"
#include "host/Types.h"

namespace mapexport {

/// A file-open box with one filter.
struct FileBox {
  std::string display;                    ///< the filter's name
  std::string pattern;                    ///< "*.cxp;*.txt"; empty: every file
  std::optional<std::string> initialDir;  ///< empty: the presenter chooses
};

/// Windows on a display. Texts and paths are bytes, read as UTF-8; other bytes are shown as
/// replacement characters. The presenter's owner window owns the first dialog or box; each further
/// one is modal and owned by the one before. All calls must be on the thread that made the
/// presenter.
class Presenter {
 public:
  virtual ~Presenter() = default;

  /// Shows the dialog and returns when it has ended, or when the system closes the windows.
  /// `window` is its handle; the template outlives the call.
  virtual void ShowDialog(HWND window, const DialogTemplate& dialog, PresentedDialog& states) = 0;
  /// Shows the changed states of that dialog. Does nothing when it isn't shown.
  virtual void UpdateDialog(HWND window) = 0;

  /// Shows a message with an OK button and waits for it.
  virtual void ShowMessageBox(const std::string& title, const std::string& text) = 0;
  /// The path of the file that the user chooses; nothing when they cancel.
  virtual std::optional<std::string> PickFile(const FileBox& box) = 0;

  // The cursor stays until the next of these calls. It is on the display when the call returns.
  virtual void ShowCursor(const CursorImage& image) = 0;
  virtual void ShowWaitCursor() = 0;
  virtual void HideCursor() = 0;

  /// Shows the owner window with a text that says what is being done. Before the first call nothing
  /// is on the display.
  virtual void ShowStatus(const std::string& status) = 0;
};

/// The version of these classes, and of all types that they use, that a library of windows was
/// built with.
inline constexpr unsigned kPresenterVersion = 1;

/// The function of such a library that makes its presenter, which the caller deletes. `title` is
/// that of the owner window. Returns null when the library has another version. Without a display
/// the process ends.
using CreatePresenterFunction = Presenter*(unsigned version, const char* title);
inline constexpr const char* kCreatePresenterName = "CreatePresenter";

}  // namespace mapexport
