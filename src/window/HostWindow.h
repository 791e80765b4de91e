// The window that stands for the host application.
#pragma once

#include <QLabel>
#include <QWidget>

namespace mapexport {

/// Owns dialogs and boxes, shows what is being done, and shows the cursors meanwhile. The user
/// can't close it, because the work continues.
class HostWindow : public QWidget {
 public:
  explicit HostWindow(const QString& title);

  void ShowStatus(const QString& status);

  /// Places itself and `dialog` so that neither covers the other: beside it, below it on a narrow
  /// screen. On a screen too small for both, changes nothing.
  void StandBeside(QWidget& dialog);

  /// In its full size, with its middle there or as near as the screen allows.
  void CentreOn(QPoint middle);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QLabel& status_;
};

}  // namespace mapexport
