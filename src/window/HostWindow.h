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

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QLabel& status_;
};

}  // namespace mapexport
