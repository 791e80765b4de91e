// A presenter that shows real windows.
#pragma once

#include <QApplication>
#include <memory>
#include <utility>
#include <vector>

#include "console/Presenter.h"
#include "window/HostWindow.h"

namespace mapexport {

class DialogWindow;

/// At most one at a time. The process's locale is unchanged.
class WindowPresenter : public Presenter {
 public:
  explicit WindowPresenter(const char* title);
  ~WindowPresenter() override;
  WindowPresenter(const WindowPresenter&) = delete;
  WindowPresenter& operator=(const WindowPresenter&) = delete;

  void ShowDialog(HWND window, const DialogTemplate& dialog, PresentedDialog& states) override;
  void UpdateDialog(HWND window) override;
  void ShowMessageBox(const std::string& title, const std::string& text) override;
  std::optional<std::string> PickFile(const FileBox& box) override;
  void ShowCursor(const CursorImage& image) override;
  void ShowWaitCursor() override;
  void HideCursor() override;
  void ShowStatus(const std::string& status) override;

 private:
  /// The window that was opened last.
  QWidget& Owner();
  void Show(const QCursor& cursor);

  std::unique_ptr<QApplication> application_;
  std::unique_ptr<HostWindow> host_;
  std::vector<std::pair<HWND, DialogWindow*>> open_;  ///< each belongs to the one before it
};

}  // namespace mapexport

/// The one function of this library that can be seen from outside.
extern "C" mapexport::CreatePresenterFunction CreatePresenter;
